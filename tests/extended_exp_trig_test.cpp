// SPDX-License-Identifier: MIT
//
// Exponential, hyperbolic and trigonometric functions and the reduction by pi/2 in extended
// precision, against MPFR.
#include <gtest/gtest.h>

#include <vector>

#include "luxvmk3_scalar.h"
#include "tests/extended.h"

using Routine = long double (*)(long double);
using Oracle = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

constexpr long double kInfinityL = __builtin_infl();
constexpr long double kHalfPi = 0xc90fdaa22168c235p-63L, kLn2 = 0xb17217f7d1cf79acp-64L;
constexpr long double kLeast = 0x1p-16445L, kLargest = 0xffffffffffffffffp16320L;

static void add_around(std::vector<long double>& all, long double x) {
  for (const long double y : {std::nextafter(x, -kInfinityL), x, std::nextafter(x, kInfinityL)})
    if (std::isfinite(y)) all.insert(all.end(), {y, -y});
}

static void add_magnitudes(std::vector<long double>& all, Random& random) {
  for (int exponent = -16382; exponent < 16384; exponent += 9)
    all.push_back(random_extended(random, exponent, exponent));
  for (const long double bound : {kLeast, 0x1p-16382L, 0x1p-33L, 1.0L, kLargest})
    add_around(all, bound);
  for (int k = 0; k < 5000; ++k) all.push_back(random_extended(random, -12, 2));
}

// Every magnitude, both halves of the table's steps, the ends of the range.
static std::vector<long double> exponential_arguments() {
  Random random{1};
  std::vector<long double> all;
  add_magnitudes(all, random);
  for (int k = 0; k < 5000; ++k) {
    all.push_back(random_extended(random, 3, 13));
    const int step = int(random.next() % 8192) - 4096;
    add_around(all, (step + 0.5L) * (kLn2 / 256));
  }
  for (const long double bound : {0x1p-4L, 24.0L, 11355.137111L, 11356.5234062941439494L,
                                  11357.2165534747038948L, 11399.4985314888605586L, 11600.0L})
    add_around(all, bound);
  return all;
}

// For an exponent e the 64-bit m for which m 2^e is nearest to a multiple of pi/2: a denominator of
// the continued fraction of 2^e 2/pi.
static long double nearest_to_multiple(int e) {
  constexpr int kPrecision = 16384 + 320;
  Number<kPrecision> ratio;
  mpfr_const_pi(ratio.value, MPFR_RNDN);
  mpfr_ui_div(ratio.value, 2, ratio.value, MPFR_RNDN);
  mpfr_mul_2si(ratio.value, ratio.value, e, MPFR_RNDN);
  mpfr_frac(ratio.value, ratio.value, MPFR_RNDN);
  Number<320> rest, whole;
  mpfr_set(rest.value, ratio.value, MPFR_RNDN);
  uint64_t before = 1, m = 0;
  while (!mpfr_zero_p(rest.value)) {
    mpfr_floor(whole.value, rest.value);
    uint64_t next;
    if (mpfr_cmp_d(whole.value, 0x1p63) >= 0 ||
        __builtin_mul_overflow(uint64_t(mpfr_get_d(whole.value, MPFR_RNDN)), m, &next) ||
        __builtin_add_overflow(next, before, &next))
      break;
    before = m;
    m = next;
    mpfr_sub(rest.value, rest.value, whole.value, MPFR_RNDN);
    mpfr_ui_div(rest.value, 1, rest.value, MPFR_RNDN);
  }
  return std::ldexp((long double)(m), e);
}

static const std::vector<long double>& hardest_angles() {
  static const std::vector<long double> all = [] {
    std::vector<long double> angles;
    for (int e = -64; e <= 16320; e += e < 64 ? 1 : 37) {
      const long double x = nearest_to_multiple(e);
      if (x > 0 && std::isfinite(x)) angles.insert(angles.end(), {x, -x});
    }
    return angles;
  }();
  return all;
}

// Every magnitude, both halves of the table's steps, the neighbourhood of multiples of pi/2.
static std::vector<long double> angles() {
  Random random{2};
  std::vector<long double> all = hardest_angles();
  add_magnitudes(all, random);
  for (int k = 0; k < 5000; ++k) {
    const int step = int(random.next() % 2048) - 1024;
    add_around(all, (step + 0.5L) * (kHalfPi / 64));
    add_around(all, step * (kHalfPi / 2));
  }
  return all;
}

static std::vector<long double> degrees() {
  Random random{3};
  std::vector<long double> all;
  add_magnitudes(all, random);
  for (int k = -100; k <= 100; ++k) add_around(all, k * 15);
  for (int k = 0; k < 4000; ++k) all.push_back(random_extended(random, 3, 70));
  return all;
}

static int sine_of_degrees(mpfr_ptr to, mpfr_srcptr x, mpfr_rnd_t round) {
  return mpfr_sinu(to, x, 360, round);
}
static int cosine_of_degrees(mpfr_ptr to, mpfr_srcptr x, mpfr_rnd_t round) {
  return mpfr_cosu(to, x, 360, round);
}

struct Function {
  const char* name;
  Routine routine;
  Oracle exact;
  std::vector<long double> (*arguments)();
};
static std::ostream& operator<<(std::ostream& out, const Function& f) { return out << f.name; }

class ExpTrig : public testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(
    Extended, ExpTrig,
    testing::Values(Function{"exp", noxexpl_scalar, mpfr_exp, exponential_arguments},
                    Function{"sinh", noxsinhl_scalar, mpfr_sinh, exponential_arguments},
                    Function{"cosh", noxcoshl_scalar, mpfr_cosh, exponential_arguments},
                    Function{"tanh", noxtanhl_scalar, mpfr_tanh, exponential_arguments},
                    Function{"sin", noxsinl_scalar, mpfr_sin, angles},
                    Function{"cos", noxcosl_scalar, mpfr_cos, angles},
                    Function{"tan", noxtanl_scalar, mpfr_tan, angles},
                    Function{"sind", noxsindl_scalar, sine_of_degrees, degrees},
                    Function{"cosd", noxcosdl_scalar, cosine_of_degrees, degrees}),
    testing::PrintToStringParamName());

// Subnormal results may be rounded twice.
TEST_P(ExpTrig, IsAccurate) {
  double worst = 0, worst_subnormal = 0;
  long double at = 0;
  for (const long double x : GetParam().arguments()) {
    Number<160> exact;
    mpfr_set_ld(exact.value, x, MPFR_RNDN);
    GetParam().exact(exact.value, exact.value, MPFR_RNDN);
    const long double y = GetParam().routine(x);
    const double error = extended_ulps(y, exact.value);
    if (std::fabs(y) < 0x1p-16382L)
      worst_subnormal = std::max(worst_subnormal, error);
    else if (!(error <= worst))
      worst = error, at = x;
  }
  EXPECT_LE(worst, 0.65) << std::hexfloat << at;
  EXPECT_LE(worst_subnormal, 1.5);
  RecordProperty("ulp", std::to_string(worst));
  EXPECT_TRUE(x87_stack_empty());
}

static bool same_bits(long double a, long double b) { return memcmp(&a, &b, 10) == 0; }

TEST(ExtendedExpTrig, PairsAreTheSingleFunctions) {
  for (const long double x : exponential_arguments()) {
    long double sine, cosine;
    noxsinhcoshl_scalar(x, &sine, &cosine);
    EXPECT_TRUE(same_bits(sine, noxsinhl_scalar(x)) && same_bits(cosine, noxcoshl_scalar(x)));
  }
  for (const long double x : angles()) {
    long double sine, cosine;
    noxsincosl_scalar(x, &sine, &cosine);
    EXPECT_TRUE(same_bits(sine, noxsinl_scalar(x)) && same_bits(cosine, noxcosl_scalar(x)));
  }
}

TEST(ExtendedExpTrig, SymmetriesHoldBitForBit) {
  std::vector<long double> all = angles();
  all.insert(all.end(), {0.0L, 30, 180, 360, 0x1p100L});
  for (const long double x : all) {
    for (const Routine odd :
         {noxsinl_scalar, noxtanl_scalar, noxsindl_scalar, noxsinhl_scalar, noxtanhl_scalar})
      ASSERT_TRUE(same_bits(odd(-x), -odd(x))) << std::hexfloat << x;
    for (const Routine even : {noxcosl_scalar, noxcosdl_scalar, noxcoshl_scalar})
      ASSERT_TRUE(same_bits(even(-x), even(x))) << std::hexfloat << x;
  }
}

// The exact remainder: in its octant, within half a unit of r[0]'s last place, and right to far
// beyond what a function needs.
TEST(ExtendedReduction, LeavesTheExactRemainder) {
  constexpr int kPrecision = 16384 + 320;
  Number<kPrecision> half_pi, multiple, rest;
  mpfr_const_pi(half_pi.value, MPFR_RNDN);
  mpfr_div_ui(half_pi.value, half_pi.value, 2, MPFR_RNDN);
  std::vector<long double> all = hardest_angles();
  Random random{4};
  for (int e = -4; e < 16384; e += 11) all.push_back(random_extended(random, e, e));
  for (const long double bound : {kHalfPi / 2, kHalfPi, 1.5L * kHalfPi, kLargest})
    add_around(all, bound);
  for (const long double x : all) {
    long double r[2];
    const int octant = noxreduce_pi04l(x, r);
    ASSERT_LE(std::fabs(r[0]), 0x1.922p-1L) << std::hexfloat << x;
    ASSERT_TRUE(same_bits(r[0] + r[1], r[0])) << std::hexfloat << x;
    mpfr_set_ld(rest.value, x, MPFR_RNDN);
    mpfr_div(multiple.value, rest.value, half_pi.value, MPFR_RNDN);
    mpfr_rint(multiple.value, multiple.value, MPFR_RNDN);
    mpfr_fms(rest.value, multiple.value, half_pi.value, rest.value, MPFR_RNDN);
    mpfr_fmod_ui(multiple.value, multiple.value, 4, MPFR_RNDN);
    const int quadrant = int(mpfr_get_si(multiple.value, MPFR_RNDN)) + 4;
    ASSERT_EQ(octant, 2 * (quadrant & 3)) << std::hexfloat << x;
    Number<64> parts[2];
    for (int i = 0; i < 2; ++i) {
      mpfr_set_ld(parts[i].value, r[i], MPFR_RNDN);
      mpfr_add(rest.value, rest.value, parts[i].value, MPFR_RNDN);
    }
    mpfr_div(rest.value, rest.value, parts[0].value, MPFR_RNDN);
    ASSERT_LE(std::fabs(mpfr_get_d(rest.value, MPFR_RNDN)), 0x1p-105) << std::hexfloat << x;
  }
}

TEST(ExtendedExpTrig, SpecialArguments) {
  const long double nan = __builtin_nanl("0x123");
  struct {
    Routine f;
    long double x, y;
    bool invalid;
  } const rows[] = {
      {noxexpl_scalar, 0.0L, 1, false},
      {noxexpl_scalar, -kInfinityL, 0.0L, false},
      {noxexpl_scalar, kInfinityL, kInfinityL, false},
      {noxexpl_scalar, nan, nan, false},
      {noxexpl_scalar, 0xb17217f7d1cf79acp-50L, kInfinityL, false},
      {noxexpl_scalar, -12000, 0.0L, false},
      {noxexpl_scalar, kLargest, kInfinityL, false},
      {noxsinhl_scalar, -kInfinityL, -kInfinityL, false},
      {noxsinhl_scalar, kLargest, kInfinityL, false},
      {noxsinhl_scalar, kLeast, kLeast, false},
      {noxsinhl_scalar, nan, nan, false},
      {noxcoshl_scalar, -kInfinityL, kInfinityL, false},
      {noxcoshl_scalar, -kLargest, kInfinityL, false},
      {noxcoshl_scalar, nan, nan, false},
      {noxcoshl_scalar, 0.0L, 1, false},
      {noxtanhl_scalar, -kInfinityL, -1, false},
      {noxtanhl_scalar, kLeast, kLeast, false},
      {noxtanhl_scalar, nan, nan, false},
      {noxsinl_scalar, kInfinityL, nan, true},
      {noxcosl_scalar, -kInfinityL, nan, true},
      {noxtanl_scalar, kInfinityL, nan, true},
      {noxsindl_scalar, kInfinityL, nan, true},
      {noxcosdl_scalar, -kInfinityL, nan, true},
      {noxsinl_scalar, nan, nan, false},
      {noxcosl_scalar, nan, nan, false},
      {noxtanl_scalar, nan, nan, false},
      {noxsindl_scalar, nan, nan, false},
      {noxcosdl_scalar, nan, nan, false},
      {noxsinl_scalar, kLeast, kLeast, false},
      {noxtanl_scalar, -kLeast, -kLeast, false},
      {noxcosl_scalar, kLeast, 1, false},
  };
  for (const auto& row : rows) {
    set({});
    const long double y = row.f(row.x);
    const bool invalid = x87_flags() & kInvalid;
    const ptrdiff_t i = &row - rows;
    if (std::isnan(row.y))
      EXPECT_TRUE(std::isnan(y)) << "row " << i;
    else
      EXPECT_TRUE(same_bits(y, row.y)) << "row " << i;
    EXPECT_EQ(invalid, row.invalid) << "row " << i;
  }
}

// Twelve images of 30 degrees, also after many turns: 360 2^k is exact.
TEST(ExtendedExpTrig, DegreesAreExactWhereTheResultIs) {
  constexpr float kOpen = 2;
  const float sines[12] = {0, 0.5, kOpen, 1, kOpen, 0.5, 0, -0.5, kOpen, -1, kOpen, -0.5};
  for (int k = -24; k <= 24; ++k)
    for (const long double turns : {0.0L, 1.0L, -3.0L, 0x1p40L, -0x1p50L}) {
      const long double x = 30 * k + 360 * turns;
      const float sine = sines[(k + 24) % 12], cosine = sines[(k + 27) % 12];
      EXPECT_TRUE(sine == kOpen || noxsindl_scalar(x) == sine) << x;
      EXPECT_TRUE(cosine == kOpen || noxcosdl_scalar(x) == cosine) << x;
    }
  for (const long double scale : {0x1p61L, 0x1p64L, 0x1p65L, 0x1p77L, 0x1p16370L}) {
    EXPECT_EQ(noxsindl_scalar(360 * scale), 0);
    EXPECT_EQ(noxcosdl_scalar(360 * scale), 1);
  }
}
