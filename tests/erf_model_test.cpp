// SPDX-License-Identifier: MIT
//
// Bit for bit against plain models of the error functions: MPFR at 24, 53 or 64 bits for each step,
// one element at a time, cells by division.
#include <gtest/gtest.h>

#include <cmath>
#include <string_view>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// The tables are data; the models look up in their own way.
namespace erf32 {
#include "kernels/erf/generated/erf_32f_table.h"
}
namespace erfc32 {
#include "kernels/erf/generated/erfc_32f_table.h"
}
namespace erf64 {
#include "kernels/erf/generated/erf_64f_table.h"
}
namespace erfc64 {
#include "kernels/erf/generated/erfc_64f_table.h"
}

template <class U>
static U magnitude(U x) {
  return x & ~kSign<U>;
}
template <class U>
static double real(U x) {
  return plain(number<Double>(x));
}

// Terms highest first.
template <class N, class... Terms>
static N polynomial(const N& x, Terms... terms) {
  N sum(0.0);
  for (const double term : {double(terms)...}) sum = sum * x + N(term);
  return sum;
}

// The nearest integer, ties to even, which remainder() leaves exactly.
static int nearest(double x) { return int(x - std::remainder(x, 1)); }

// ---- Singles

static uint32_t erf_model(uint32_t x, std::string_view grade) {
  const uint32_t sign = x & kSign<uint32_t>;
  if (is_nan(x)) return x | kQuiet<uint32_t>;
  const double a = std::fmin(real(magnitude(x)), 4);
  if (grade == "A24" || magnitude(x) < 0x00800000u) {
    const auto& c = erf32::kCubic[nearest(64 * a)];
    return stored<uint32_t>((polynomial(Double(a), c.c3, c.c2, c.c1, c.c0) * Double(a)).value) |
           sign;
  }
  const int k = nearest(32 * a);
  const float* const c = erf32::kRow[k].c;
  const Single r(a - k / 32.0);
  Single y = grade == "A21" ? polynomial(r, c[3], c[2], c[1], c[0]) : polynomial(r, c[1], c[0]);
  y = y * Single(a);
  return stored<uint32_t>(plain(y) > 1 ? Single(1).value : y.value) | sign;
}

static uint32_t erfc_model(uint32_t x, std::string_view grade) {
  const bool negative = x != magnitude(x);
  if (is_nan(x)) return x | kQuiet<uint32_t>;
  if (magnitude(x) >= 0x4120DDFC) return negative ? 0x40000000 : 0;
  const double a = real(magnitude(x));
  const int k = nearest(32 * a);
  if (grade == "A24" || a >= 9.1875) {
    const auto& c = erfc32::kSeptic[k];
    const Double y =
        polynomial(Double(a - k / 32.0), c.s[0], c.s[1], c.s[2], c.s[3], c.s[4], c.d2, c.d1, 1) *
        Double(c.scale);
    return stored<uint32_t>((negative ? Double(2) - y : y).value);
  }
  const float* const c = erfc32::kRow[k].c;
  const auto& p = erfc32::kPower21;
  const auto& q = erfc32::kPower11;
  const Single r(a - k / 32.0), w = r * (Single(a) + Single(k / 32.0));
  const bool long_sums = grade == "A21";
  const Single power = long_sums ? polynomial(w, p[0], p[1], p[2], p[3], p[4], 1)
                                 : polynomial(w, q[0], q[1], q[2], 1);
  const Single rest = long_sums ? polynomial(r, c[3], c[2], c[1], 1) : polynomial(r, c[1], 1);
  const Single y = Single(c[0]) * power * rest;
  return stored<uint32_t>((negative && a > 0 ? Single(2) - y : y).value);
}

// ---- Doubles

static uint64_t erf_model(uint64_t x, std::string_view) {
  const uint64_t sign = x & kSign<uint64_t>;
  if (is_nan(x)) return x | kQuiet<uint64_t>;
  const double a = real(magnitude(x));
  if (a >= 6) return kOne<uint64_t> | sign;
  const Extended u(a);
  if (a < 9.0 / 128) {
    const auto& [s, tail, head] = erf64::kSeries;
    const Extended z = u * u;
    const Extended sum = polynomial(z, s[0], s[1], s[2], s[3], s[4], s[5]) * z;
    return stored<uint64_t>(((sum + Extended(tail) + Extended(head)) * u).value) | sign;
  }
  const Single shifter(0x1.8p+23);
  const double k =
      plain(as<Single>(u * Extended(40) + as<Extended>(shifter)) - shifter) - erf64::kFirstCell;
  const auto& c = erf64::kCell[int(k)];
  const Extended r = u - Extended(c.point);
  const Extended sum = polynomial(r, c.c7, c.c6, c.c5, c.c4, c.c3, c.c2, c.c1) * r;
  return stored<uint64_t>((sum + Extended(c.tail) + Extended(c.head)).value) | sign;
}

static uint64_t erfc_model(uint64_t x, std::string_view grade) {
  const bool negative = x != magnitude(x);
  if (is_nan(x)) return x | kQuiet<uint64_t>;
  if (magnitude(x) >= 0x403B39DC41E48BFD) return negative ? 0x4000000000000000 : 0;
  const Extended a = number<Extended>(magnitude(x));
  // 64 cells to a binade of 1 + a, 256 from 16 on.
  int exponent;
  const double fraction = std::frexp(plain(as<Single>(Extended(1) + a)), &exponent);
  const bool far = exponent > 4;
  const int binade = far ? erfc64::kFarCell : 64 * (exponent - 1), count = far ? 256 : 64;
  const auto& c = erfc64::kCell[binade + int(count * (2 * fraction - 1))];

  const Extended r = a - Extended(c.point), w = r * (a + Extended(c.point));
  const Single shifter(0x1.8p+16);
  const double step = plain(as<Single>(w + as<Extended>(shifter)) - shifter);
  const auto& p = erfc64::kPower[erfc64::kPowerZero + int(128 * step)];
  const auto& e = erfc64::kExponential;
  const Extended v = w - Extended(step);
  const Extended power = polynomial(v, e[0], e[1], e[2], e[3], -1) * v;
  const Extended rest = polynomial(r, c.d7, c.d6, c.d5, c.d4, c.d3, c.d2, c.d1) * r;
  const bool both = grade == "A53";
  const Extended scale = (Extended(c.head) + Extended(both ? c.tail : 0)) *
                         (Extended(p.head) + Extended(both ? double(p.tail) : 0));
  Extended y = scale + scale * (power + rest + power * rest);
  if (far) mpfr_mul_2si(y.value, y.value, -erfc64::kFarScale, MPFR_RNDN);
  return stored<uint64_t>((negative ? Extended(2) - y : y).value);
}

// ---- Comparison

// Runs of ordinary arguments beside runs of any patterns, so that blocks of both kinds come up; of
// every four one near 0 on a logarithmic scale, one at a multiple of 1/640, where cells meet.
template <class U>
static std::vector<U> arguments(double low, double high, uint64_t seed, int count) {
  using Real = typename Format<U>::Real;
  Random random{seed};
  std::vector<U> all;
  for (int i = 0; i < count; ++i) {
    if (i % 64 < 8) {
      all.push_back(any_pattern<U>(random));
      continue;
    }
    double x = low + (high - low) * random.unit();
    if (i % 4 == 1) x = std::ldexp(random.unit() - 0.5, -int(random.next() % 40));
    if (i % 4 == 2) x = std::nearbyint(x * 640) / 640;
    const volatile Real rounded = Real(x);
    all.push_back(bits(Real(rounded)) + U(random.next() % 3) - 1);
  }
  return all;
}

template <class U>
using Model = U (*)(U, std::string_view);

template <class U>
static void expect_model(std::string_view family, double low, double high, Model<U> model) {
  constexpr int kCount = 50000;
  const std::vector<U> x = arguments<U>(low, high, 7, kCount);
  std::vector<U> out(x.size());
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    f.call({{x.data()}, {out.data()}, nullptr}, kCount);
    int failures = 0;
    for (int i = 0; i < kCount && failures < 10; ++i)
      if (const U want = model(x[i], f.grade); out[i] != want)
        ADD_FAILURE() << f.name << " element " << std::dec << i << " (0x" << std::hex << x[i]
                      << "): got 0x" << out[i] << ", wanted 0x" << want << " " << ++failures;
  }
}

TEST(Model, ErfSingle) { expect_model<uint32_t>("Erf", -4.2, 4.2, erf_model); }
TEST(Model, ErfcSingle) { expect_model<uint32_t>("Erfc", -5, 10.2, erfc_model); }
TEST(Model, ErfDouble) { expect_model<uint64_t>("Erf", -6.2, 6.2, erf_model); }
TEST(Model, ErfcDouble) { expect_model<uint64_t>("Erfc", -7, 27.4, erfc_model); }

// A processor that takes subnormal operands for zeros must not be seen in a result, nor where in a
// block an element stands.
TEST(Environment, NeitherDenormalsAreZeroNorPositionMatters) {
  constexpr int kCount = 4000;
  std::vector<uint32_t> x = arguments<uint32_t>(-4, 10, 3, kCount);
  for (int i = 0; i < kCount; i += 5) x[i] &= 0x807FFFFF;
  std::vector<uint32_t> want(kCount), out(kCount);
  for (const Function& f : kFunctions) {
    if (!f.is("Erf", "32f") && !f.is("Erfc", "32f")) continue;
    f.call({{x.data()}, {want.data()}, nullptr}, kCount);
    set({kDefaultControl, kDefaultMxcsr | 0x40});
    f.call({{x.data()}, {out.data()}, nullptr}, kCount);
    set({});
    EXPECT_EQ(out, want) << f.name << " with denormals as zeros";
    for (int i = 0; i < kCount; ++i) f.call({{&x[i]}, {&out[i]}, nullptr}, 1);
    EXPECT_EQ(out, want) << f.name << " one by one";
  }
}
