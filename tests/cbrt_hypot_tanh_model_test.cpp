// SPDX-License-Identifier: MIT
//
// Hypotenuse and hyperbolic tangent, bit for bit against plain models of the methods: MPFR at 53 bits
// for the steps, its own square root for the one in software, arithmetic on exponents for what the
// kernels look up. Cube roots that are exact.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

template <class U>
static bool is_special(U x) {
  return (x & kInfinity<U>) == kInfinity<U>;
}

// All grades. Two special operands may give any quiet NaN where the model gives one.
template <class U>
static void expect_results(std::string_view family, const std::vector<U>& x,
                           const std::vector<U>& y, const std::vector<U>& want) {
  std::vector<U> out(x.size());
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    for (const size_t len : {x.size(), size_t(67)}) {
      EXPECT_EQ(f.call({{x.data(), y.data()}, {out.data()}, nullptr}, int32_t(len)), 0);
      int failures = 0;
      for (size_t i = 0; i < len && failures < 10; ++i)
        if (out[i] != want[i] && !(is_special(x[i]) && is_special(y[i]) && same(out[i], want[i])))
          ADD_FAILURE() << f.name << " element " << std::dec << i << " (0x" << std::hex << x[i]
                        << ", 0x" << y[i] << "): got 0x" << out[i] << ", wanted 0x" << want[i]
                        << " " << ++failures;
    }
  }
}

static void expect_model(std::string_view family, const std::vector<uint32_t>& x,
                         uint32_t (*model)(uint32_t)) {
  std::vector<uint32_t> want(x.size());
  for (size_t i = 0; i < x.size(); ++i) want[i] = model(x[i]);
  expect_results(family, x, std::vector<uint32_t>(x.size()), want);
}

static Double value(uint32_t x) {
  Double v;
  set_exact(v.value, x);
  return v;
}
static Double value(uint64_t x) {
  Double v;
  set_exact(v.value, x);
  return v;
}
static Double scaled(Double v, int exponent) {
  mpfr_mul_2si(v.value, v.value, exponent, MPFR_RNDN);
  return v;
}

// Runs of any patterns beside runs in the interval, so that blocks of both kinds come up.
static std::vector<uint32_t> arguments(double low, double high, int count) {
  Random random{23};
  std::vector<uint32_t> all;
  for (int i = 0; i < count; ++i) {
    const volatile float ordinary = float(low * std::exp2(std::log2(high / low) * random.unit()));
    all.push_back(i % 64 < 16 ? any_pattern<uint32_t>(random)
                              : bits(float(ordinary)) | (random.next() & kSign<uint32_t>));
  }
  return all;
}

// ---- Cube root

// A wrong coefficient moves a root by more than the half unit that keeps these exact.
TEST(Exact, CubeRootsOfCubes) {
  std::vector<uint32_t> cubes, roots;
  for (int n = -255; n <= 255; ++n) {
    if (n == 0) continue;
    cubes.push_back(bits(float(n * n * n)));
    roots.push_back(bits(float(n)));
  }
  expect_results("Cbrt", cubes, std::vector<uint32_t>(cubes.size()), roots);
}

// ---- Hypotenuse

static uint64_t rounded(const Double& v, uint64_t) { return stored<uint64_t>(v.value); }
static uint32_t rounded(const Double& v, uint32_t) { return stored<uint32_t>(v.value); }

template <class U>
static U hypot_of(U x, U y) {
  const U a = x & ~kSign<U>, b = y & ~kSign<U>;
  if (is_nan(a) || is_nan(b)) return (is_nan(a) ? x : y) | kQuiet<U>;
  if (a == kInfinity<U> || b == kInfinity<U>) return kInfinity<U>;
  if (a == 0 && b == 0) return 0;

  Double p = value(x), q = value(y);
  int up = 0;
  if (sizeof(U) == 8 && (uint64_t(std::max(a, b)) >> 52) < 500) up = 1000;
  Double sum = scaled(p, up) * scaled(p, up) + scaled(q, up) * scaled(q, up);
  if (sizeof(U) == 4 && rounded(sum, uint32_t()) >> 23 == 0) {
    sum = scaled(sum, 200);
    up = 100;
  }
  // The sum of squares as a double: its fields mean what they say also in infinity and subnormals.
  const uint64_t d = rounded(sum, uint64_t());
  const int exponent = int(d >> 52) - 1023, parity = exponent & 1;
  Double root = scaled(value((d & 0x000FFFFFFFFFFFFFu) | kOne<uint64_t>), parity);
  mpfr_sqrt(root.value, root.value, MPFR_RNDN);
  return rounded(scaled(root, (exponent - parity) / 2 - up), U());
}

// Pairs of near and of far exponents, in runs of 64 that stay on one side of every bound of the
// sum's exponent or go across it.
template <class U>
static void expect_hypot(const std::vector<int>& centres) {
  constexpr int kMantissa = Format<U>::mantissa, kBias = Format<U>::bias;
  Random random{31};
  std::vector<U> x, y, want;
  const auto with_exponent = [&](int e) {
    const U digits = U(random.next()) & ((U(1) << kMantissa) - 1);
    const int field = std::min(std::max(e + kBias, 0), 2 * kBias);
    return U(field) << kMantissa | (random.next() % 8 ? digits : 0) | (U(random.next()) & kSign<U>);
  };
  for (int run = 0; run < 3000; ++run) {
    const int centre = centres[run % centres.size()], spread = run % 3 ? 2 : 20;
    for (int i = 0; i < 64; ++i) {
      const int e = centre + int(random.next() % (2 * spread + 1)) - spread;
      U p = with_exponent(e), q = with_exponent(e - int(random.next() % (i % 4 ? 4 : 60)));
      if (run % 7 == 0 && i % 9 == 0) (random.next() % 2 ? p : q) = any_pattern<U>(random);
      if (random.next() % 2) std::swap(p, q);
      x.push_back(p);
      y.push_back(q);
      want.push_back(hypot_of(p, q));
    }
  }
  expect_results("Hypot", x, y, want);
}

TEST(Model, HypotSingle) { expect_hypot<uint32_t>({0, -63, -149, -100, 64, 126, 127, 30}); }
TEST(Model, HypotDouble) {
  expect_hypot<uint64_t>({0, -511, -523, -1022, -700, 505, 511, 1023, 30});
}

// Radicands whose roots lie closest to the middle of two doubles. With odd X, X^2 = r modulo 2^t
// and N = X^2 - r, the root of N is X less about r / 2X, and X has one bit more than a double.
static std::vector<double> hardest_radicands() {
  std::vector<double> all;
  for (const int t : {54, 55}) {
    for (int64_t r = -799; r < 800; r += 8) {
      uint64_t x = 1;
      for (int k = 3; k <= t; ++k)
        if ((x * x - uint64_t(r)) & ((uint64_t(1) << k) - 1)) x += uint64_t(1) << (k - 2);
      for (const uint64_t root :
           {x, -x, x + (uint64_t(1) << (t - 1)), (uint64_t(1) << (t - 1)) - x}) {
        const uint64_t odd = (root & ((uint64_t(1) << 53) - 1)) | uint64_t(1) << 53;
        if ((odd * odd - uint64_t(r)) & ((uint64_t(1) << t) - 1)) continue;
        Number<200> radicand(std::ldexp(double(odd >> 1), 1));
        mpfr_add_ui(radicand.value, radicand.value, 1, MPFR_RNDN);
        mpfr_sqr(radicand.value, radicand.value, MPFR_RNDN);
        mpfr_sub_si(radicand.value, radicand.value, long(r), MPFR_RNDN);
        mpfr_div_2ui(radicand.value, radicand.value, 106, MPFR_RNDN);
        const double m = mpfr_get_d(radicand.value, MPFR_RNDN);
        if (mpfr_cmp_d(radicand.value, m) == 0) all.push_back(m);
      }
    }
  }
  return all;
}

TEST(Model, HypotOfHardestRoots) {
  std::vector<uint64_t> x, y, want;
  for (const double d : hardest_radicands()) {
    const double a = 0.8 * std::sqrt(d);
    const Double p(a), square = p * p;
    Double q = Double(d) - square;
    mpfr_sqrt(q.value, q.value, MPFR_RNDN);
    // The second square has to bring the sum to d exactly; a neighbour of the root does.
    for (int64_t nudge = -3; nudge <= 3; ++nudge) {
      const uint64_t b = stored<uint64_t>(q.value) + uint64_t(nudge);
      if (mpfr_cmp_d((square + value(b) * value(b)).value, d) != 0) continue;
      x.push_back(bits(a));
      y.push_back(b);
      want.push_back(hypot_of(x.back(), b));
      break;
    }
  }
  ASSERT_GT(x.size(), 300u);
  expect_results("Hypot", x, y, want);
}

// ---- Hyperbolic tangent

static uint32_t tanh_32f(uint32_t x) {
  const uint32_t a = x & ~kSign<uint32_t>, sign = x ^ a;
  if (is_nan(x)) return x | kQuiet<uint32_t>;
  if (a <= 0x00800000) return x;
  if (a >= 0x41200000) return sign | kOne<uint32_t>;
  const Double v = value(a), one(1);
  if (a < 0x3A83126F) {
    const Double square = v * v;
    const Double p = (Double(-17) / Double(315) * square + Double(2) / Double(15)) * square +
                     Double(-1) / Double(3);
    return sign | stored<uint32_t>((v + square * v * p).value);
  }
  const int j = int(std::nearbyint(std::ldexp(mpfr_get_d(v.value, MPFR_RNDN), 4)));
  const Double r = v - Double(j / 16.0), square = r * r;
  const Double cosh = Double(0.9999999950346924) + Double(0.5000406873557977) * square;
  const Double sinh = r * (Double(1.0000000109269136) + Double(0.16665852882511148) * square);
  Double t(j / 16.0);
  mpfr_tanh(t.value, t.value, MPFR_RNDN);
  return sign | stored<uint32_t>(((sinh + t * cosh) / (t * sinh + cosh)).value);
}

TEST(Model, Tanh) {
  auto x = arguments(0.0011, 9.99, 200000);
  for (const uint32_t a : arguments(1e-7, 20, 50000)) x.push_back(a);
  for (const uint32_t bound : {0x00800000u, 0x3A83126Fu, 0x41200000u, 0x7F800000u})
    for (const int nudge : {-1, 0, 1}) x.push_back(bound + nudge);
  // Ties between two entries of the table, and their neighbours.
  for (int k = 1; k < 320; k += 2)
    for (const int nudge : {-1, 0, 1}) x.push_back(bits(float(k) / 32) + nudge);
  expect_model("Tanh", x, tanh_32f);
}
