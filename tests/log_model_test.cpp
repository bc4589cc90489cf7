// SPDX-License-Identifier: MIT
//
// The logarithms against literal models of their methods, computed with MPFR at the precision of
// each step, and where a fit is free against the error that its table states.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

using Exact = Number<200>;

struct Base {
  std::string_view family;
  int (*logarithm)(mpfr_t, const mpfr_t, mpfr_rnd_t);
  double main[6], near_one[6];
  double cubic_error;  // stated for the fitted intervals of the single-precision table
};
static const Base kBases[] = {
    {"Ln",
     mpfr_log,
     {1.0, -0.4999999999999955, 0.3333333333198306, -0.24999998524219055, 0.19999270610222492,
      -0.16500333306925632},
     {1.0, -0.5, 1.0 / 3, -0.25, 0.2, -1.0 / 6},
     4.44e-13},
    {"Log10",
     mpfr_log10,
     {0.4342944819032518, -0.21714724095162394, 0.1447648272952198, -0.10857361406657776,
      0.08685572868109508, -0.07166003704762237},
     {0.4342944819032518, -0.2171472409516259, 0.14476482730108395, -0.10857362047581295,
      0.08685889638065036, -0.07238241365054197},
     1.93e-13},
};

static Exact logarithm(const Base& base, const Exact& x) {
  Exact y;
  base.logarithm(y.value, x.value, MPFR_RNDN);
  return y;
}
static const Extended& log_of_2(const Base& base) {
  static const Extended kTwo[] = {as<Extended>(logarithm(kBases[0], 2)),
                                  as<Extended>(logarithm(kBases[1], 2))};
  return kTwo[&base - kBases];
}

template <class U>
static std::vector<U> run(const Function& f, const std::vector<U>& x) {
  std::vector<U> y(x.size());
  f.call({{x.data()}, {y.data()}, nullptr}, int32_t(x.size()));
  return y;
}

// Every element once in each lane of a pair whose other one is special.
template <class U>
static std::vector<U> run_beside(const Function& f, const std::vector<U>& x, U special) {
  std::vector<U> mixed, y;
  for (const U value : x) mixed.insert(mixed.end(), {value, special, special, value});
  mixed = run(f, mixed);
  for (size_t i = 0; i < mixed.size(); i += 4) {
    y.push_back(mixed[i]);
    EXPECT_EQ(mixed[i + 3], mixed[i]) << f.name;
  }
  return y;
}

// `holds(base, x, y)` for every input and result of every grade; equal results are checked once.
template <class U, class Run, class Holds>
static void expect(const std::vector<U>& x, Run run, Holds holds) {
  for (const Base& base : kBases) {
    std::vector<U> checked;
    for (const Function& f : kFunctions) {
      if (!f.is(base.family, sizeof(U) == 4 ? "32f" : "64f")) continue;
      const std::vector<U> y = run(f, x);
      if (y == checked) continue;
      checked = y;
      int failures = 0;
      for (size_t i = 0; i < x.size() && failures < 10; ++i)
        if (!holds(base, x[i], y[i]))
          ADD_FAILURE() << f.name << "(0x" << std::hex << x[i] << "): got 0x" << y[i] << " "
                        << ++failures;
    }
    EXPECT_FALSE(checked.empty());
  }
}
// Once in pairs, and once one by one: a last element of its own is computed by the same steps.
template <class U, class Holds>
static void expect_in_pairs_and_alone(const std::vector<U>& x, Holds holds) {
  expect(x, run<U>, holds);
  const std::vector<U> some(x.begin(), x.begin() + 1000);
  expect(
      some,
      [](const Function& f, const std::vector<U>& x) {
        std::vector<U> y;
        for (const U value : x) y.push_back(run<U>(f, {value})[0]);
        return y;
      },
      holds);
}

// ---- Double precision: every result is determined

static Extended polynomial(const double (&a)[6], const Extended& t) {
  Extended sum(a[5]);
  for (int k = 4; k >= 0; --k) sum = sum * t + Extended(a[k]);
  return sum * t;
}

struct Interval64 {
  Extended high, low, reciprocal;  // each a double
};
static std::vector<Interval64> intervals(const Base& base) {
  std::vector<Interval64> all;
  for (int i = 0; i < 256; ++i) {
    const Exact start(1 + i / 256.0), whole = logarithm(base, start);
    const auto high = as<Double>(whole, MPFR_RNDZ), low = as<Double>(whole - as<Exact>(high));
    all.push_back(
        {as<Extended>(high), as<Extended>(low), as<Extended>(as<Double>(Exact(1) / start))});
  }
  return all;
}

static bool is_log_64f(const Base& base, uint64_t x, uint64_t y) {
  static const std::vector<Interval64> kTables[] = {intervals(kBases[0]), intervals(kBases[1])};
  const auto one = number<Extended>(kOne<uint64_t>);
  if (x >> 44 == 0x3FEFF)
    return y == stored<uint64_t>(polynomial(base.near_one, number<Extended>(x) - one).value);
  const auto& [high, low, reciprocal] = kTables[&base - kBases][x >> 44 & 255];
  const Extended t = (number<Extended>((x & 0xFFFFFFFFFFF) | kOne<uint64_t>) - one) * reciprocal;
  const Extended e(int(x >> 52) - 1023);
  return y ==
         stored<uint64_t>((polynomial(base.main, t) + (e * log_of_2(base) + high + low)).value);
}

// Every interval and exponent, crowded at the edges of the intervals and on both sides of 1.
static std::vector<uint64_t> log_arguments_64f(int count) {
  Random random{3};
  std::vector<uint64_t> all;
  for (int k = 0; k < count; k += 4) {
    const uint64_t r = random.next() >> 12, edge = random.next() % 512 << 44;
    all.push_back((random.next() % 2046 + 1) << 52 | r);
    all.push_back(0x3FE0000000000000 + edge + random.next() % 5 - 2);
    all.push_back(0x3FEFE00000000000 | r >> 7);
    // Nothing hides the last bits of an interval's logarithm here.
    for (int n = 0; n < 4; ++n) all.push_back(0x3FF0000000000000 | random.next() >> 12);
    all.push_back(0x3FF0000000000000 | r >> (8 + random.next() % 40));
  }
  return all;
}

TEST(Model, LogDouble) { expect_in_pairs_and_alone(log_arguments_64f(60000), is_log_64f); }

// A special neighbour sends an ordinary element through other code, not through other steps.
TEST(Model, LogDoubleBesideSpecialElements) {
  const std::vector<uint64_t> x = log_arguments_64f(2000);
  for (const uint64_t special :
       {uint64_t(0), uint64_t(1), kInfinity<uint64_t>, kOne<uint64_t> - 1, kSign<uint64_t>})
    expect(
        x, [=](const Function& f, const auto& x) { return run_beside(f, x, special); }, is_log_64f);
}

// ---- Single precision

static bool is_taylor_interval(uint32_t x) {
  const uint32_t i = x >> 15 & 255;
  return i == 0 || i == 255;
}

using Cubic = std::array<Double, 4>;
static Cubic taylor(const Base& base, bool last) {
  Exact e;
  mpfr_exp(e.value, Exact(1).value, MPFR_RNDN);
  const Exact unit = logarithm(base, e);  // 1 or log10(e)
  const auto coefficient = [&](const Exact& c) { return as<Double>(unit * c); };
  const Double c3 = coefficient(Exact(1) / Exact(last ? 24 : 3));
  const Double c2 = coefficient(last ? -0.375 : -1.5), c1 = coefficient(last ? 1.5 : 3);
  const Double c0 = last ? as<Double>(logarithm(base, Exact(2)) - unit * Exact(11) / Exact(6))
                         : Double(0) - ((c3 + c2) + c1);
  return {c0, c1, c2, c3};
}

static bool is_taylor_32f(const Base& base, uint32_t x, uint32_t y) {
  static const Cubic kCubics[][2] = {{taylor(kBases[0], false), taylor(kBases[0], true)},
                                     {taylor(kBases[1], false), taylor(kBases[1], true)}};
  const auto& [c0, c1, c2, c3] = kCubics[&base - kBases][x >> 15 & 1];
  const auto z = number<Double>((x & 0x7FFFFF) | kOne<uint32_t>);
  Double multiple;
  mpfr_mul_si(multiple.value, log_of_2(base).value, int(x >> 23) - 127, MPFR_RNDN);
  return y == stored<uint32_t>((multiple + (((c3 * z + c2) * z + c1) * z + c0)).value);
}

// The exact value differs by `slack` at most from what y is the rounding of.
template <class U>
static bool rounds_to(const Base& base, U x, U y, double slack) {
  const Exact value = logarithm(base, number<Exact>(x));
  const double half = std::ldexp(0.5, int(mpfr_get_exp(value.value)) - Format<U>::mantissa - 1);
  const Exact distance = number<Exact>(y) - value;
  return std::fabs(mpfr_get_d(distance.value, MPFR_RNDN)) <= half + slack;
}

// Four roundings at 53 bits of values below 128 come on top of the fit.
static bool is_cubic_32f(const Base& base, uint32_t x, uint32_t y) {
  return rounds_to(base, x, y, base.cubic_error + 0x1p-46);
}
template <class U>
static bool is_rounded_once(const Base& base, U x, U y) {
  return rounds_to(base, x, y, std::fabs(double(*reals(&y))) * 0x1p-62);
}

// Every exponent, crowded around 1: there the 53 bits of the steps show.
template <class Wanted>
static std::vector<uint32_t> log_arguments_32f(size_t count, Wanted wanted) {
  Random random{7};
  std::vector<uint32_t> all;
  while (all.size() < count) {
    const uint32_t distance = uint32_t(random.next()) >> (9 + random.next() % 23);
    const uint32_t near[] = {kOne<uint32_t> - distance, kOne<uint32_t> + distance};
    const uint32_t any = uint32_t(random.next()) % (kInfinity<uint32_t> - 0x800000) + 0x800000;
    for (const uint32_t x : {near[0], near[1], any})
      if (x != kOne<uint32_t> && wanted(x)) all.push_back(x);
  }
  return all;
}

TEST(Model, LogSingleInTheTaylorIntervals) {
  expect_in_pairs_and_alone(log_arguments_32f(20000, is_taylor_interval), is_taylor_32f);
}
TEST(Model, LogSingleInTheFittedIntervals) {
  expect_in_pairs_and_alone(
      log_arguments_32f(20000, [](uint32_t x) { return !is_taylor_interval(x); }), is_cubic_32f);
}

// Beside a special element the processor's logarithm is rounded once.
TEST(Model, LogSingleBesideSpecialElements) {
  // From here on a cubic would be off by more.
  const auto x =
      log_arguments_32f(2000, [](uint32_t x) { return x >= 0x3F807000 && x < 0x3F808000; });
  for (const uint32_t special :
       {0u, 1u, kInfinity<uint32_t>, kInfinity<uint32_t> + 1, kSign<uint32_t>})
    expect(
        x, [=](const Function& f, const auto& x) { return run_beside(f, x, special); },
        is_rounded_once<uint32_t>);
}

// So it is of subnormal arguments.
TEST(Model, LogOfSubnormals) {
  std::vector<uint32_t> singles;
  std::vector<uint64_t> doubles;
  for (uint32_t k = 1; k < 1u << 23; k += 8101) {
    singles.push_back(k);
    doubles.push_back(uint64_t(k) << 29 | k);
  }
  expect(singles, run<uint32_t>, is_rounded_once<uint32_t>);
  expect(doubles, run<uint64_t>, is_rounded_once<uint64_t>);
}
