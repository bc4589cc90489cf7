// SPDX-License-Identifier: MIT
//
// Inverse sine and cosine, circular and hyperbolic, in extended precision against MPFR.
#include <gtest/gtest.h>

#include <vector>

#include "luxvmk3_scalar.h"
#include "tests/extended.h"

using Routine = long double (*)(long double);
using Oracle = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

constexpr long double kInfinityL = __builtin_infl();

// Both neighbours of a bound and the bound.
static void add_around(std::vector<long double>& all, long double bound) {
  for (const long double x :
       {std::nextafter(bound, -kInfinityL), bound, std::nextafter(bound, kInfinityL)})
    all.insert(all.end(), {x, -x});
}

// Every magnitude, more around the bounds of the methods, and more next to +-1, where acos and
// acosh are small and asin is steep.
static std::vector<long double> arguments() {
  Random random{17};
  std::vector<long double> all;
  for (const long double bound : {0.5L, 1.0L, 1.5L, 0x1p33L, 0x1p-33L, 0x1p120L, 0x1p16383L})
    add_around(all, bound);
  add_around(all, 0x1p-16382L);
  for (int k = 0; k < 12000; ++k) {
    const bool anywhere = k % 3 == 0;
    all.push_back(random_extended(random, anywhere ? -16382 : -3, anywhere ? 16383 : 2));
    const long double distance = random_extended(random, -63, -1);
    all.insert(all.end(), {1 + distance, distance - 1});
    all.push_back(random_extended(random, 30, 36));
  }
  return all;
}

struct Function {
  const char* name;
  Routine routine;
  Oracle exact;
  double bound;
};
static std::ostream& operator<<(std::ostream& out, const Function& f) { return out << f.name; }

class Inverse : public testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(Extended, Inverse,
                         testing::Values(Function{"asin", noxasinl_scalar, mpfr_asin, 0.65},
                                         Function{"acos", noxacosl_scalar, mpfr_acos, 0.65},
                                         Function{"asinh", noxasinhl_scalar, mpfr_asinh, 0.65},
                                         Function{"acosh", noxacoshl_scalar, mpfr_acosh, 0.65}),
                         testing::PrintToStringParamName());

TEST_P(Inverse, IsAccurateAndUndefinedBeyondItsRange) {
  double worst = 0;
  long double at = 0;
  for (const long double x : arguments()) {
    Number<256> exact;
    mpfr_set_ld(exact.value, x, MPFR_RNDN);
    GetParam().exact(exact.value, exact.value, MPFR_RNDN);
    const double error = extended_ulps(GetParam().routine(x), exact.value);
    if (error > worst) worst = error, at = x;
  }
  EXPECT_LE(worst, GetParam().bound) << std::hexfloat << at;
  RecordProperty("ulp", std::to_string(worst));
  EXPECT_TRUE(x87_stack_empty());
}

// Odd to the last bit, -0 among them.
TEST(ExtendedInverse, SinesAreOdd) {
  for (const Routine f : {noxasinl_scalar, noxasinhl_scalar})
    for (const long double x : {0.0L, 0x1p-16445L, 0x1p-16382L, 0.3L, 0.5L, 0.7L, 1.0L}) {
      EXPECT_EQ(f(-x), -f(x));
      EXPECT_TRUE(std::signbit(f(-x)));
      EXPECT_FALSE(std::signbit(f(x)));
    }
  EXPECT_EQ(noxasinhl_scalar(-0x1p16000L), -noxasinhl_scalar(0x1p16000L));
}

TEST(ExtendedInverse, SpecialArguments) {
  const long double nan = __builtin_nanl("0x123");
  constexpr long double kHalfPi = 0xc90fdaa22168c235p-63L;
  struct {
    Routine f;
    long double x, y;
    bool invalid;
  } const rows[] = {
      {noxasinl_scalar, 1, kHalfPi, false},
      {noxasinl_scalar, -1, -kHalfPi, false},
      {noxasinl_scalar, 0x1.0000000000000002p0L, nan, true},
      {noxasinl_scalar, -kInfinityL, nan, true},
      {noxasinl_scalar, nan, nan, false},
      {noxacosl_scalar, 1, 0.0L, false},
      {noxacosl_scalar, -1, 2 * kHalfPi, false},
      {noxacosl_scalar, -0.0L, kHalfPi, false},
      {noxacosl_scalar, -0x1.0000000000000002p0L, nan, true},
      {noxacosl_scalar, kInfinityL, nan, true},
      {noxacosl_scalar, nan, nan, false},
      {noxasinhl_scalar, kInfinityL, kInfinityL, false},
      {noxasinhl_scalar, -kInfinityL, -kInfinityL, false},
      {noxasinhl_scalar, nan, nan, false},
      {noxacoshl_scalar, 1, 0.0L, false},
      {noxacoshl_scalar, 0x0.ffffffffffffffffp0L, nan, true},
      {noxacoshl_scalar, -kInfinityL, nan, true},
      {noxacoshl_scalar, kInfinityL, kInfinityL, false},
      {noxacoshl_scalar, nan, nan, false},
  };
  for (const auto& row : rows) {
    const long double x = row.x;
    set({});
    const long double y = row.f(x);
    const uint16_t flags = x87_flags();
    const ptrdiff_t i = &row - rows;
    if (std::isnan(row.y))
      EXPECT_TRUE(std::isnan(y)) << "row " << i;
    else
      EXPECT_EQ(y, row.y) << "row " << i;
    EXPECT_FALSE(y == 0 && std::signbit(y)) << "row " << i;
    EXPECT_EQ(bool(flags & kInvalid), row.invalid) << "row " << i;
  }
  EXPECT_TRUE(x87_stack_empty());
}
