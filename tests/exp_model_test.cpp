// SPDX-License-Identifier: MIT
//
// Bit for bit against literal models of the methods, computed with MPFR at the precision of each
// step: a kernel may arrange its work as it likes, but not change a result.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// factor * 2^(exponent), from high precision
template <class N>
static N scaled_root(double factor, double exponent) {
  Number<200> power;
  mpfr_set_d(power.value, exponent, MPFR_RNDN);
  mpfr_exp2(power.value, power.value, MPFR_RNDN);
  mpfr_mul_d(power.value, power.value, factor, MPFR_RNDN);
  N rounded;
  mpfr_set(rounded.value, power.value, MPFR_RNDN);
  return rounded;
}
template <class N>
static std::vector<N> roots(double factor, int count, int steps) {
  std::vector<N> table;
  for (int j = 0; j < count; ++j) table.push_back(scaled_root<N>(factor, double(j) / steps));
  return table;
}
static Extended log2_e() {
  Extended log2_e, ln2;
  Number<200> exact;
  mpfr_const_log2(exact.value, MPFR_RNDN);
  mpfr_ui_div(log2_e.value, 1, exact.value, MPFR_RNDN);
  return log2_e;
}

// The even part of t in steps of `step`, to nearest, and its integer number of steps.
struct Reduced {
  double grid;
  int32_t k;
};
template <class N>
static Reduced reduce(const N& t, double shifter, double step) {
  const N u = t + N(shifter);
  double stored;
  if (step == 0x1p-6)
    stored = mpfr_get_flt(u.value, MPFR_RNDN);
  else
    stored = mpfr_get_d(u.value, MPFR_RNDN);
  const volatile double grid = stored - shifter;
  return {grid, int32_t(grid / step)};
}

static uint32_t exp_32f(uint32_t x) {
  static const Extended kLog2E = log2_e();
  static const auto kT = roots<Double>(0.24022606667644342, 64, 64);
  Double t;
  Number<24> a;
  set_exact(a.value, x);
  mpfr_mul(t.value, a.value, kLog2E.value, MPFR_RNDN);
  const auto [grid, k] = reduce(t, 196608.0, 0x1p-6);
  // r = u - shifted grid, both exact; u carries t's rounding at the shifter's size.
  const Double r = (t + Double(196608.0)) - Double(196608.0 + grid);
  const Double q = (r + Double(2.885405946656543)) * r + Double(4.162745591525487);
  Double scaled = kT[k & 63];
  mpfr_mul_2si(scaled.value, scaled.value, k >> 6, MPFR_RNDN);
  return stored<uint32_t>((scaled * q).value);
}

static uint64_t exp_64f(uint64_t x) {
  constexpr double kC2 = 0.240226506994931, kC3 = 0.05550410867227228;
  static const Extended kLog2E = log2_e();
  static const auto kT1 = roots<Extended>(1, 32, 32), kT2 = roots<Extended>(1, 32, 1024),
                    kT3 = roots<Extended>(kC3, 16, 16384);
  static const Extended kQ0 = Extended(1) / Extended(kC3), kQ2 = Extended(kC2) / Extended(kC3);
  static const Extended kQ1 = [] {
    Number<200> q;
    mpfr_const_log2(q.value, MPFR_RNDN);
    mpfr_div_d(q.value, q.value, kC3, MPFR_RNDN);
    Extended rounded;
    mpfr_set(rounded.value, q.value, MPFR_RNDN);
    return rounded;
  }();
  Extended a;
  set_exact(a.value, x);
  const Extended t = a * kLog2E;
  const auto [grid, k] = reduce(t, 412316860416.0, 0x1p-14);
  const Extended r = t - Extended(grid);
  Extended y = ((r + kQ2) * r + kQ1) * r + kQ0;
  y = y * kT3[k & 15] * kT2[k >> 4 & 31] * kT1[k >> 9 & 31];
  mpfr_mul_2si(y.value, y.value, k >> 14, MPFR_RNDN);
  return stored<uint64_t>(y.value);
}

template <class U>
static void expect_model(std::string_view family, const std::vector<U>& x, U (*model)(U)) {
  std::vector<U> want(x.size()), out(x.size());
  for (size_t i = 0; i < x.size(); ++i) want[i] = model(x[i]);
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    f.call({{x.data()}, {out.data()}, nullptr}, int32_t(x.size()));
    int failures = 0;
    for (size_t i = 0; i < x.size() && failures < 10; ++i)
      if (out[i] != want[i])
        ADD_FAILURE() << f.name << "(0x" << std::hex << x[i] << "): got 0x" << out[i]
                      << ", wanted 0x" << want[i] << " " << ++failures;
  }
}

// Uniform in the range, uniform in exponent below 1, and the points where rounding to the table's
// grid turns: half steps of the grid.
template <class U>
static std::vector<U> exp_arguments(double low, double high, double step, int count) {
  Random random{11};
  std::vector<U> all;
  const auto add = [&](double x, int nudge) {
    const volatile typename Format<U>::Real narrow = typename Format<U>::Real(x);
    typename Format<U>::Real value = narrow;
    U pattern;
    memcpy(&pattern, &value, sizeof pattern);
    all.push_back(pattern + U(nudge));
  };
  for (int k = 0; k < count; ++k) {
    const double x = low + (high - low) * random.unit();
    add(x, 0);
    add(x * 0x1p-6, 0);
    add(std::ldexp(random.unit() - 0.5, -int(random.next() % 80)), 0);
    const double half = (std::floor(x * 1.4426950408889634 / step) + 0.5) * step;
    add(half * 0.6931471805599453, int(random.next() % 5) - 2);
  }
  for (const double x : {0.0, 1.0, -1.0, low, high}) add(x, 0);
  return all;
}

TEST(Model, ExpSingle) {
  expect_model<uint32_t>("Exp", exp_arguments<uint32_t>(-103.97, 88.72, 0x1p-6, 100000), exp_32f);
}
TEST(Model, ExpDouble) {
  expect_model<uint64_t>("Exp", exp_arguments<uint64_t>(-745.13, 709.78, 0x1p-14, 60000), exp_64f);
}

// ---- Inv and Div: one division for four doubles

static bool in_single_range(const Extended& p) {
  if (!mpfr_regular_p(p.value)) return false;
  Extended magnitude = p, low, high;
  mpfr_abs(magnitude.value, magnitude.value, MPFR_RNDN);
  mpfr_set_ui_2exp(low.value, 1, -150, MPFR_RNDN);
  mpfr_set_ui_2exp(high.value, (1 << 25) - 1, 103, MPFR_RNDN);  // (2 - 2^-24) 2^127
  return mpfr_greater_p(magnitude.value, low.value) && mpfr_less_p(magnitude.value, high.value);
}

static void quotients(const uint64_t* dividend, const uint64_t* divisor, uint64_t* out) {
  Extended a[4], d[4];
  for (int i = 0; i < 4; ++i) {
    set_exact(d[i].value, divisor[i]);
    if (dividend) set_exact(a[i].value, dividend[i]);
  }
  const Extended low = d[0] * d[1], high = d[2] * d[3], product = low * high;
  const bool shared = in_single_range(product);
  const Extended one(1), r = one / product;
  for (int i = 0; i < 4; ++i) {
    Extended q = shared ? r * d[i ^ 1] * (i < 2 ? high : low) : (dividend ? a[i] : one) / d[i];
    if (shared && dividend) q = q * a[i];
    out[i] = stored<uint64_t>(q.value);
  }
}

TEST(Model, InvAndDivDouble) {
  constexpr int kCount = 120000;
  Random random{5};
  std::vector<uint64_t> a(kCount), d(kCount), out(kCount), want(kCount);
  for (int block = 0; block < kCount; block += 4) {
    // Products all over, crowded at the two edges of the single range.
    const int centre[] = {0, -150, 127, 300}, total = centre[random.next() % 4];
    const int spread = random.next() % 3 ? 20 : 500;
    int left = total;
    for (int i = 0; i < 4; ++i) {
      const int exponent = i < 3 ? int(random.next() % (2 * spread)) - spread : left;
      left -= exponent;
      const uint64_t digits = random.next() % 4 ? random.next() >> 12 : random.next() % 2;
      d[block + i] = (random.next() & kSign<uint64_t>) |
                     uint64_t(std::clamp(1023 + exponent, 1, 2046)) << 52 | digits;
      a[block + i] =
          (random.next() & kSign<uint64_t>) | (random.next() % 2047) << 52 | random.next() >> 12;
    }
  }
  for (const Function& f : kFunctions) {
    const bool div = f.is("Div", "64f");
    if (!div && !f.is("Inv", "64f")) continue;
    for (int block = 0; block < kCount; block += 4)
      quotients(div ? &a[block] : nullptr, &d[block], &want[block]);
    const void* first = div ? a.data() : d.data();
    f.call({{first, d.data()}, {out.data()}, nullptr}, kCount);
    int failures = 0;
    for (int i = 0; i < kCount && failures < 10; ++i)
      if (out[i] != want[i])
        ADD_FAILURE() << f.name << " element " << i << " (divisor 0x" << std::hex << d[i]
                      << "): got 0x" << out[i] << ", wanted 0x" << want[i] << " " << ++failures;
  }
}
