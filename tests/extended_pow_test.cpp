// SPDX-License-Identifier: MIT
//
// The extended power against MPFR: strata, bases next to 1, the edges of the range, exact powers,
// special values.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "luxvmk3_scalar.h"
#include "tests/extended.h"

constexpr long double kInf = std::numeric_limits<long double>::infinity();
constexpr long double kNaN = std::numeric_limits<long double>::quiet_NaN();
constexpr long double kLeast = 0x1p-16445L, kLargest = std::numeric_limits<long double>::max();

static double pow_ulps(long double x, long double y) {
  Number<64> base, exponent;
  mpfr_set_ld(base.value, x, MPFR_RNDN);
  mpfr_set_ld(exponent.value, y, MPFR_RNDN);
  Number<200> power;
  mpfr_pow(power.value, base.value, exponent.value, MPFR_RNDN);
  return extended_ulps(noxpowl_scalar(x, y), power.value);
}

// An exponent that takes x to about 2^t.
static long double exponent_for(long double x, long double t) { return t / std::log2(x); }

struct Stratum {
  const char* name;
  double bound;
  std::function<std::pair<long double, long double>(Random&)> draw;
};
static long double positive(Random& random, int least, int most) {
  return std::fabs(random_extended(random, least, most));
}
static const Stratum kStrata[] = {
    {"moderate", 0.52,
     [](Random& r) { return std::pair(positive(r, -4, 4), random_extended(r, -4, 5)); }},
    {"any base, power within range", 0.52,
     [](Random& r) {
       const long double x = positive(r, -16445, 16383);
       return std::pair(x, exponent_for(x, 16380 * (2 * (long double)r.unit() - 1)));
     }},
    {"bases next to 1", 0.52,
     [](Random& r) {
       const long double x = 1 + random_extended(r, -63, -3);
       return std::pair(x, exponent_for(x, 16380 * (2 * (long double)r.unit() - 1)));
     }},
    {"tiny exponents", 0.52,
     [](Random& r) { return std::pair(positive(r, -16445, 16383), random_extended(r, -90, -4)); }},
    {"exponents of one half", 0.52,
     [](Random& r) { return std::pair(positive(r, -16445, 16383), r.next() % 2 ? 0.5L : -0.5L); }},
    {"negative bases", 0.52,
     [](Random& r) {
       return std::pair(-positive(r, -40, 40), (long double)(int(r.next() % 601) - 300));
     }},
    // Rounded once more to the subnormal.
    {"subnormal and overflowing powers", 0.76,
     [](Random& r) {
       const long double x = positive(r, -16445, 16383);
       const long double t =
           r.next() % 2 ? 16384 + 0.01L * (2 * r.unit() - 1) : -16447 + 66 * r.unit();
       return std::pair(x, exponent_for(x, t));
     }},
};

class ExtendedPow : public testing::TestWithParam<Stratum> {};
INSTANTIATE_TEST_SUITE_P(Strata, ExtendedPow, testing::ValuesIn(kStrata));

TEST_P(ExtendedPow, IsAccurate) {
  Random random{31};
  double worst = 0;
  for (int k = 0; k < 6000; ++k) {
    const auto [x, y] = GetParam().draw(random);
    if (x == 0 || !std::isfinite(y)) continue;
    const double ulps = pow_ulps(x, y);
    ASSERT_LE(ulps, GetParam().bound) << std::hexfloat << x << " ^ " << y;
    worst = std::max(worst, ulps);
  }
  RecordProperty("ulp", std::to_string(worst));
}

// Neighbours of the bases where a table cell ends, where no cell is used any more, and of the
// exponents where the result leaves the range.
TEST(ExtendedPower, IsAccurateBesideItsSteps) {
  std::vector<long double> bases = {2, 0.5L, 4, 0x1p-16382L, 0x1p16383L, kLeast, kLargest};
  for (int i = 0; i <= 512; ++i) bases.push_back(1 + i / 512.0L);
  for (const long double base : bases)
    for (const long double x : {std::nextafter(base, 0.0L), base, std::nextafter(base, kInf)}) {
      if (x == 0 || x == 1 || std::isinf(x)) continue;
      for (const long double t : {1.5L, -100.25L, 16383.99L, -16381.99L, 16384.01L}) {
        const long double y = exponent_for(x, t);
        EXPECT_LE(pow_ulps(x, y), 0.52) << std::hexfloat << x << " ^ " << y;
      }
    }
}

TEST(ExtendedPower, ExactPowersAreExact) {
  for (int base = 2; base < 60; ++base) {
    uint64_t power = unsigned(base);
    for (int k = 1;; ++k, power *= unsigned(base)) {
      const long double want = (long double)power;
      EXPECT_EQ(noxpowl_scalar(base, k), want) << base << " ^ " << k;
      EXPECT_EQ(noxpowl_scalar(-base, k), k % 2 ? -want : want) << base << " ^ " << k;
      if (k % 2 == 0) {
        EXPECT_EQ(noxpowl_scalar(want, 0.5L), noxpowl_scalar(base, k / 2));
      }
      if (power > ~uint64_t(0) / unsigned(base)) break;
    }
  }
  EXPECT_EQ(noxpowl_scalar(2, -16445), kLeast);
  EXPECT_EQ(noxpowl_scalar(-2, 16383), -0x1p16383L);
}

static bool same(long double a, long double b) {
  return std::isnan(b) ? std::isnan(a) : a == b && std::signbit(a) == std::signbit(b);
}

TEST(ExtendedPower, SpecialValues) {
  constexpr uint16_t kNothing = 0;
  // 2^63 + 1 is odd, beyond 2^64 all are even.
  const long double odd = 0x1p63L + 1, even = 0x1p64L;
  const struct {
    long double x, y, power;
    uint16_t flags;  // invalid and divide-by-zero
  } rows[] = {
      {0.0L, 3, 0.0L, kNothing},
      {-0.0L, 3, -0.0L, kNothing},
      {-0.0L, 2, 0.0L, kNothing},
      {-0.0L, 0.5L, 0.0L, kNothing},
      {0.0L, -3, kInf, kZeroDivide},
      {-0.0L, -3, -kInf, kZeroDivide},
      {-0.0L, -2, kInf, kZeroDivide},
      {-0.0L, -0.5L, kInf, kZeroDivide},
      {-0.0L, -odd, -kInf, kZeroDivide},
      {-0.0L, -even, kInf, kZeroDivide},
      {0.0L, -kInf, kInf, kNothing},
      {0.0L, kInf, 0.0L, kNothing},
      {-1, kInf, 1, kNothing},
      {-1, -kInf, 1, kNothing},
      {-1, odd, -1, kNothing},
      {-1, even, 1, kNothing},
      {1, kNaN, 1, kNothing},
      {1, -kInf, 1, kNothing},
      {kNaN, 0.0L, 1, kNothing},
      {kInf, -0.0L, 1, kNothing},
      {-2, -0.0L, 1, kNothing},
      {kNaN, 1, kNaN, kNothing},
      {2, kNaN, kNaN, kNothing},
      {-1, kNaN, kNaN, kNothing},
      {-2, 0.5L, kNaN, kInvalid},
      {-1, 0.5L, kNaN, kInvalid},
      {-kLeast, 1.5L, kNaN, kInvalid},
      {0.5L, -kInf, kInf, kNothing},
      {-0.5L, kInf, 0.0L, kNothing},
      {2, -kInf, 0.0L, kNothing},
      {-2, kInf, kInf, kNothing},
      {-kInf, -3, -0.0L, kNothing},
      {-kInf, -2, 0.0L, kNothing},
      {-kInf, -0.5L, 0.0L, kNothing},
      {-kInf, 3, -kInf, kNothing},
      {-kInf, 2, kInf, kNothing},
      {-kInf, 0.5L, kInf, kNothing},
      {kInf, -kLeast, 0.0L, kNothing},
      {kInf, kLeast, kInf, kNothing},
      {2, 16384, kInf, kNothing},
      {-2, 16385, -kInf, kNothing},
      {2, -16447, 0.0L, kNothing},
      {-2, -16447, -0.0L, kNothing},
      {kLargest, kLargest, kInf, kNothing},
      {kLargest, -kLargest, 0.0L, kNothing},
      {1 - 0x1p-64L, kLargest, 0.0L, kNothing},
      {1 - 0x1p-64L, -kLargest, kInf, kNothing},
      {kLargest, kLeast, 1, kNothing},
      {kLeast, -kLeast, 1, kNothing},
  };
  for (const auto& row : rows) {
    set({});
    const long double got = noxpowl_scalar(row.x, row.y);
    const uint16_t flags = x87_flags() & (kInvalid | kZeroDivide);
    EXPECT_TRUE(same(got, row.power)) << row.x << " ^ " << row.y << " gives " << got;
    EXPECT_EQ(flags, row.flags) << row.x << " ^ " << row.y;
  }
  EXPECT_TRUE(x87_stack_empty());
}
