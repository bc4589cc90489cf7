// SPDX-License-Identifier: MIT
//
// Extended logarithms, arc tangents and the inverse hyperbolic tangent against MPFR, and their
// special arguments.
#include <gtest/gtest.h>

#include "luxvmk3_scalar.h"
#include "tests/extended.h"

constexpr long double kInfinite = INFINITY, kNan = NAN, kSmallest = 0x1p-16445L;
constexpr long double kLargest = 0x1.fffffffffffffffep16383L;
constexpr long double kPi = 0xc.90fdaa22168c235p-2L, kThreeQuarters = 0x9.6cbe3f9990e91a8p-2L;

struct Worst {
  double ulps = 0;
  long double y = 0, x = 0;
  void see(double error, long double at_y, long double at_x) {
    if (!(error <= ulps)) *this = {error, at_y, at_x};
  }
};

static void expect_at_most(double bound, const char* name, const Worst& worst) {
  char text[200];
  snprintf(text, sizeof text, "%s: %.4f ulp at %La, %La", name, worst.ulps, worst.y, worst.x);
  EXPECT_LE(worst.ulps, bound) << text;
  testing::Test::RecordProperty(name, text);
}

// Every exponent, moderate ones, numbers next to 0, 1 and -1, and both sides of every bound
// between two cells, where the reduced argument is largest.
static std::vector<long double> arguments(int cells, int cells_below_one) {
  Random random{5};
  std::vector<long double> all = {kSmallest, -kSmallest, kLargest, -kLargest};
  for (int k = 0; k < 8000; ++k) {
    all.push_back(random_extended(random, -16382, 16383));
    all.push_back(random_extended(random, -8, 8));
    all.push_back(random_extended(random, -70, 0));
    const long double next_to_one = 1 + random_extended(random, -63, -1);
    all.push_back(random.next() % 2 ? next_to_one : -next_to_one);
    all.push_back(std::ldexp((long double)(random.next() >> 1), -16508));  // subnormal
  }
  for (int k = 0; k < 2 * cells; ++k)
    for (const int steps : {-3, -2, -1, 0, 1, 2, 3}) {
      const long double bound = (k + 0.5L) / cells;
      all.push_back(bound + steps * 0x1p-63L);
      all.push_back((k + 0.5L) / cells_below_one + steps * 0x1p-64L);
      all.push_back(1 / bound + steps * 0x1p-60L);
      all.push_back(bound - 1 + steps * 0x1p-63L);
    }
  return all;
}

struct OneArgument {
  const char* name;
  long double (*f)(long double);
  int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  int cells, cells_below_one;
  double bound;
};

TEST(ExtendedLogAtan, OneArgument) {
  const OneArgument rows[] = {
      {"log", noxlogl_scalar, mpfr_log, 256, 512, 0.53},
      {"log1p", noxlog1pl_scalar, mpfr_log1p, 256, 512, 0.6},
      {"atanh", noxatanhl_scalar, mpfr_atanh, 256, 512, 0.6},
      {"atan", noxatanl_scalar, mpfr_atan, 64, 64, 0.53},
  };
  for (const auto& row : rows) {
    Worst worst;
    Number<256> x, exact;
    for (const long double argument : arguments(row.cells, row.cells_below_one)) {
      mpfr_set_ld(x.value, argument, MPFR_RNDN);
      row.exact(exact.value, x.value, MPFR_RNDN);
      if (mpfr_number_p(exact.value))
        worst.see(extended_ulps(row.f(argument), exact.value), argument, 0);
    }
    expect_at_most(row.bound, row.name, worst);
  }
  EXPECT_TRUE(x87_stack_empty());
}

// Any two exponents, similar ones, quotients next to a bound between two cells, and quotients that
// are subnormal.
static std::vector<std::pair<long double, long double>> points() {
  Random random{6};
  std::vector<std::pair<long double, long double>> all;
  const auto exponent = [&] { return int(random.next() % 32766) - 16382; };
  for (int k = 0; k < 8000; ++k) {
    all.push_back({random_extended(random, -16382, 16383), random_extended(random, -16382, 16383)});
    const int e = exponent();
    const long double x = random_extended(random, e, e);
    all.push_back({random_extended(random, std::max(e - 9, -16382), std::min(e + 9, 16383)), x});
    all.push_back({std::ldexp((long double)(random.next() >> 1), -16508),
                   random_extended(random, -16382, -16300)});
    const int tiny = exponent() / 2 + 8000;
    all.push_back(
        {random_extended(random, tiny - 16400, tiny - 16370), random_extended(random, tiny, tiny)});
    const long double d = std::ldexp(1 + random.unit(), int(random.next() % 40) - 20);
    const long double bound = d * ((random.next() % 65 + 0.5L) / 64);
    all.push_back({bound, d});
    all.push_back({-d, -bound});
  }
  return all;
}

TEST(ExtendedLogAtan, AngleOfAPoint) {
  Worst radians, degrees;
  Number<256> y, x, exact, half_turn;
  mpfr_const_pi(half_turn.value, MPFR_RNDN);
  for (const auto& [ordinate, abscissa] : points()) {
    mpfr_set_ld(y.value, ordinate, MPFR_RNDN);
    mpfr_set_ld(x.value, abscissa, MPFR_RNDN);
    mpfr_atan2(exact.value, y.value, x.value, MPFR_RNDN);
    radians.see(extended_ulps(noxatan2l_scalar(ordinate, abscissa), exact.value), ordinate,
                abscissa);
    exact = exact * 180 / half_turn;
    degrees.see(extended_ulps(noxatan2dl_scalar(ordinate, abscissa), exact.value), ordinate,
                abscissa);
  }
  expect_at_most(0.53, "atan2", radians);
  expect_at_most(1.1, "atan2 in degrees", degrees);
}

TEST(ExtendedLogAtan, MultiplesOf45DegreesAreExact) {
  Random random{7};
  for (int k = 0; k < 2000; ++k) {
    const long double a = std::fabs(random_extended(random, -16382, 16383));
    const long double directions[][2] = {{0, a},  {a, a},   {a, 0},  {a, -a},
                                         {0, -a}, {-a, -a}, {-a, 0}, {-a, a}};
    for (int i = 0; i < 8; ++i)
      EXPECT_EQ(noxatan2dl_scalar(directions[i][0], directions[i][1]),
                i < 5 ? 45 * i : 45 * i - 360);
  }
}

// ---- Special arguments

static bool identical(long double a, long double b) {
  return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

TEST(ExtendedLogAtan, SpecialArguments) {
  struct {
    long double (*f)(long double);
    long double x, y;
    uint16_t flag;
  } const rows[] = {
      {noxlogl_scalar, 1, 0, 0},
      {noxlogl_scalar, 0, -kInfinite, kZeroDivide},
      {noxlogl_scalar, -0.0L, -kInfinite, kZeroDivide},
      {noxlogl_scalar, -1, kNan, kInvalid},
      {noxlogl_scalar, -kSmallest, kNan, kInvalid},
      {noxlogl_scalar, -kInfinite, kNan, kInvalid},
      {noxlogl_scalar, kInfinite, kInfinite, 0},
      {noxlogl_scalar, kNan, kNan, 0},
      {noxlogl_scalar, -kNan, kNan, 0},
      {noxlog1pl_scalar, 0, 0, 0},
      {noxlog1pl_scalar, -0.0L, -0.0L, 0},
      {noxlog1pl_scalar, -1, -kInfinite, kZeroDivide},
      {noxlog1pl_scalar, -1.5L, kNan, kInvalid},
      {noxlog1pl_scalar, -kInfinite, kNan, kInvalid},
      {noxlog1pl_scalar, kInfinite, kInfinite, 0},
      {noxlog1pl_scalar, kSmallest, kSmallest, 0},
      {noxlog1pl_scalar, kNan, kNan, 0},
      {noxatanhl_scalar, 0, 0, 0},
      {noxatanhl_scalar, -0.0L, -0.0L, 0},
      {noxatanhl_scalar, 1, kInfinite, kZeroDivide},
      {noxatanhl_scalar, -1, -kInfinite, kZeroDivide},
      {noxatanhl_scalar, 1 + 0x1p-63L, kNan, kInvalid},
      {noxatanhl_scalar, -kInfinite, kNan, kInvalid},
      {noxatanhl_scalar, -kSmallest, -kSmallest, 0},
      {noxatanhl_scalar, kNan, kNan, 0},
      {noxatanl_scalar, 0, 0, 0},
      {noxatanl_scalar, -0.0L, -0.0L, 0},
      {noxatanl_scalar, kInfinite, kPi / 2, 0},
      {noxatanl_scalar, -kInfinite, -kPi / 2, 0},
      {noxatanl_scalar, kLargest, kPi / 2, 0},
      {noxatanl_scalar, 1, kPi / 4, 0},
      {noxatanl_scalar, -kSmallest, -kSmallest, 0},
      {noxatanl_scalar, kNan, kNan, 0},
  };
  for (const auto& row : rows) {
    set({});
    const long double got = row.f(row.x);
    const uint16_t flags = x87_flags() & (kInvalid | kZeroDivide | kOverflow);
    EXPECT_TRUE(identical(got, row.y)) << &row - rows << ": " << row.x << " gives " << got;
    EXPECT_EQ(flags, row.flag) << &row - rows << ": " << row.x;
  }
}

TEST(ExtendedLogAtan, SpecialPoints) {
  constexpr long double kQuarter = kPi / 4;
  struct {
    long double y, x, angle, degrees;
  } const rows[] = {
      {0, 0, 0, 0},
      {0, -0.0L, kPi, 180},
      {0, 5, 0, 0},
      {0, -5, kPi, 180},
      {3, 0, kPi / 2, 90},
      {3, -0.0L, kPi / 2, 90},
      {3, kInfinite, 0, 0},
      {3, -kInfinite, kPi, 180},
      {kInfinite, 3, kPi / 2, 90},
      {kInfinite, -3, kPi / 2, 90},
      {kInfinite, kInfinite, kQuarter, 45},
      {kInfinite, -kInfinite, kThreeQuarters, 135},
      {kSmallest, kSmallest, kQuarter, 45},
      {kLargest, -kLargest, kThreeQuarters, 135},
      {kSmallest, kLargest, 0, 0},
      {kSmallest, -kLargest, kPi, 180},
      {kNan, 1, kNan, kNan},
      {1, kNan, kNan, kNan},
      {kNan, kInfinite, kNan, kNan},
      {kInfinite, kNan, kNan, kNan},
  };
  for (const auto& row : rows)
    for (const long double sign : {1.0L, -1.0L}) {
      set({});
      const long double angle = noxatan2l_scalar(sign * row.y, row.x);
      const long double degrees = noxatan2dl_scalar(sign * row.y, row.x);
      EXPECT_EQ(x87_flags() & (kInvalid | kZeroDivide | kOverflow), 0) << &row - rows;
      EXPECT_TRUE(identical(angle, sign * row.angle)) << &row - rows << ": " << angle;
      EXPECT_TRUE(identical(degrees, sign * row.degrees)) << &row - rows << ": " << degrees;
    }
}
