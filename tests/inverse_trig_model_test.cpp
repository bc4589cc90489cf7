// SPDX-License-Identifier: MIT
//
// Bit for bit against plain models of the inverse trigonometric methods: MPFR at 24, 53 or 64 bits
// for each step, one element at a time, quadrants by comparison.
#include <gtest/gtest.h>

#include <cmath>
#include <string_view>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// The tables are data; the models look up in their own way.
namespace asin32 {
#include "kernels/trig/generated/asin_32f_table.h"
}
namespace atan32 {
#include "kernels/trig/generated/atan_32f_table.h"
}
namespace asin64 {
#include "kernels/trig/generated/asin_64f_table.h"
}
namespace atan64 {
#include "kernels/trig/generated/atan_64f_table.h"
}

// ---- Numbers

template <class N>
static N negated(N x) {
  mpfr_neg(x.value, x.value, MPFR_RNDN);
  return x;
}
template <class N>
static bool above(const N& a, const N& b) {
  return mpfr_greater_p(a.value, b.value);
}
template <class N>
static N pi(double multiple) {
  Number<200> exact;
  mpfr_const_pi(exact.value, MPFR_RNDN);
  return as<N>(exact * Number<200>(multiple));
}

static const Double kDoublePi = pi<Double>(1), kDoubleHalfPi = pi<Double>(0.5);
static const Single kSinglePi = pi<Single>(1), kSingleHalfPi = pi<Single>(0.5);

template <class U>
static U magnitude(U x) {
  return x & ~kSign<U>;
}
template <class U>
static bool beyond_one(U x) {
  return magnitude(x) > kOne<U>;
}
template <class U>
static U default_nan() {
  return kSign<U> | kInfinity<U> | kQuiet<U>;
}

// ---- Singles

// The nearest multiple of 1/512, as the sum with a large single leaves it.
static int cell(const Single& u) {
  const Single base(0x1.8p+14);
  return int(plain(u + base - base) * 512);
}

template <class Quadratic>
static Double quadratic(const Quadratic* table, const Single& index, const Double& u) {
  const Quadratic& q = table[cell(index)];
  return ((Double(q.c2) * u + Double(q.c1)) * u + Double(q.c0)) * u;
}

template <int kTerms>
static Single polynomial(const float (&p)[kTerms], const Single& u, const Single& z) {
  Single sum(p[0]);
  for (int k = 1; k < kTerms; ++k) sum = sum * z + Single(p[k]);
  return u + u * z * sum;
}

static Single packed_asin(std::string_view grade, const Single& u, const Single& z) {
  return grade == "A21" ? polynomial(asin32::kAsin21, u, z) : polynomial(asin32::kAsin11, u, z);
}
static Single packed_atan(std::string_view grade, const Single& u) {
  return grade == "A21" ? polynomial(atan32::kAtan21, u, u * u)
                        : polynomial(atan32::kAtan11, u, u * u);
}

// |x| <= 1. Of a folded argument 1/2 and up to pi/2 left: asin of the root of (1 - |x|)/2.
static uint32_t arcsine(uint32_t x, bool cosine, std::string_view grade) {
  const Single a = number<Single>(magnitude(x)), z = (Single(1) - a) * Single(0.5), s = root(z);
  const bool folded = above(a, Single(0.5)), negative = x != magnitude(x);
  if (grade == "A24") {
    Double u = as<Double>(a);
    if (folded) {
      const Single h = number<Single>(stored<uint32_t>(s.value) & 0xFFFFF000u);
      const Single rest = plain(z) == 0 ? Single(0.0) : (z - h * h) / (s + h);
      u = as<Double>(h) + as<Double>(rest);
    }
    const Double y = quadratic(asin32::kQuadratic, folded ? s : a, u), twice = Double(2) * y;
    if (cosine)
      return stored<uint32_t>((folded ? (negative ? kDoublePi - twice : twice)
                                      : (negative ? kDoubleHalfPi + y : kDoubleHalfPi - y))
                                  .value);
    return stored<uint32_t>((folded ? kDoubleHalfPi - twice : y).value) | (x & kSign<uint32_t>);
  }
  const Single y = packed_asin(grade, folded ? s : a, folded ? z : a * a), twice = y + y;
  if (cosine)
    return stored<uint32_t>((folded ? (negative ? kSinglePi - twice : twice)
                                    : (negative ? kSingleHalfPi + y : kSingleHalfPi - y))
                                .value);
  if (plain(a) < 0x1p-12) return x;
  return stored<uint32_t>((folded ? kSingleHalfPi - twice : y).value) | (x & kSign<uint32_t>);
}

static uint32_t asin_model(uint32_t x, uint32_t, std::string_view grade) {
  if (is_nan(x)) return x | kQuiet<uint32_t>;
  return beyond_one(x) ? default_nan<uint32_t>() : arcsine(x, false, grade);
}
static uint32_t acos_model(uint32_t x, uint32_t, std::string_view grade) {
  if (is_nan(x)) return x | kQuiet<uint32_t>;
  return beyond_one(x) ? default_nan<uint32_t>() : arcsine(x, true, grade);
}

static bool normal(uint32_t x) {
  return magnitude(x) >= 0x00800000u && magnitude(x) < kInfinity<uint32_t>;
}

// Of the first quadrant, a and b finite and not both zero.
static uint32_t quadrant(uint32_t y, uint32_t x, bool left, std::string_view grade) {
  const uint32_t a = magnitude(y), b = magnitude(x);
  const bool swapped = a > b;
  const uint32_t n = swapped ? b : a, d = swapped ? a : b;
  const float quotient = mpfr_get_flt((number<Double>(n) / number<Double>(d)).value, MPFR_RNDN);
  const Single q = number<Single>(bits(quotient));
  Single result;
  if (grade == "A24") {
    Double t = quadratic(atan32::kQuadratic, q, number<Double>(n) / number<Double>(d));
    if (swapped)
      t = left ? kDoubleHalfPi + t : kDoubleHalfPi - t;
    else if (left)
      t = kDoublePi - t;
    return stored<uint32_t>(t.value) | (y & kSign<uint32_t>);
  }
  Single t = quotient < 0x1p-12f ? q : packed_atan(grade, q);
  if (swapped) t = kSingleHalfPi - t;
  if (left) t = kSinglePi - t;
  return stored<uint32_t>(t.value) | (y & kSign<uint32_t>);
}

static uint32_t atan_model(uint32_t x, uint32_t, std::string_view grade) {
  if (is_nan(x)) return x | kQuiet<uint32_t>;
  if (magnitude(x) == kInfinity<uint32_t>)
    return stored<uint32_t>(kSingleHalfPi.value) | (x & kSign<uint32_t>);
  return quadrant(x, kOne<uint32_t>, false, grade);
}

// Axes, infinities: exact quotients, by the C library in double, which rounds to the same singles.
template <class U>
static bool on_an_edge(U y, U x) {
  const U a = magnitude(y), b = magnitude(x);
  return a == 0 || b == 0 || a == kInfinity<U> || b == kInfinity<U>;
}
static uint32_t edge(uint32_t y, uint32_t x) {
  return bits(float(std::atan2(*reals(&y), *reals(&x))));
}
static uint64_t edge(uint64_t y, uint64_t x) { return bits(std::atan2(*reals(&y), *reals(&x))); }

static uint32_t atan2_model(uint32_t y, uint32_t x, std::string_view grade) {
  if (is_nan(y)) return y | kQuiet<uint32_t>;
  if (is_nan(x)) return x | kQuiet<uint32_t>;
  if (on_an_edge(y, x)) return edge(y, x);
  // Subnormal coordinates get the best computation under every grade.
  return quadrant(y, x, x != magnitude(x), normal(y) && normal(x) ? grade : "A24");
}

// ---- Doubles

static Extended odd_series(const double (&s)[3], const Extended& v) {
  const Extended w = v * v;
  return v + ((Extended(s[0]) * w + Extended(s[1])) * w + Extended(s[2])) * (w * v);
}
static Extended sum(const double (&pair)[2]) { return Extended(pair[0]) + Extended(pair[1]); }

// Sets k to the cell's angle, counted from 0.
static Extended rotated(uint64_t x, int* k) {
  const Extended a = number<Extended>(magnitude(x)), one(1), r = root((one - a) * (one + a));
  const Single base(0x1.8p+16);
  *k = int(plain(as<Single>(a - r + Extended(0x1.8p+16)) - base) * 128) + 128;
  const auto& t = asin64::kRotation[*k];
  return odd_series(asin64::kSeries, sum(t.cosine) * a + sum(t.minus_sine) * r);
}

static uint64_t asin_model(uint64_t x, uint64_t, std::string_view) {
  if (is_nan(x)) return x | kQuiet<uint64_t>;
  if (beyond_one(x)) return default_nan<uint64_t>();
  int k;
  const Extended rest = rotated(x, &k);
  const double* const angle = asin64::kRotation[k].angle;
  return stored<uint64_t>((rest + Extended(angle[1]) + Extended(angle[0])).value) |
         (x & kSign<uint64_t>);
}
static uint64_t acos_model(uint64_t x, uint64_t, std::string_view) {
  if (is_nan(x)) return x | kQuiet<uint64_t>;
  if (beyond_one(x)) return default_nan<uint64_t>();
  int k;
  const Extended rest = rotated(x, &k);
  const bool negative = x != magnitude(x);
  const auto& c = asin64::kComplement[negative][k];
  const Extended y = (negative ? rest : negated(rest)) + Extended(c.low) + Extended(c.high);
  return magnitude(stored<uint64_t>(y.value));  // no angle is negative, nor a zero
}

static uint64_t turned(uint64_t y, uint64_t x) {
  const Extended a = number<Extended>(magnitude(y)), b = number<Extended>(magnitude(x));
  const bool left = x != magnitude(x);
  const double quotient = plain(a / b);
  // 32 cells to a binade from 2^-8 on, counted from 1.
  int k = 0, exponent;
  const double fraction = std::frexp(quotient, &exponent);
  if (quotient >= 0x1p8)
    k = 513;
  else if (quotient >= 0x1p-8)
    k = 1 + 32 * (exponent + 7) + int(fraction * 64) - 32;
  const auto& c = atan64::kCell[k];
  const Extended n(c.n), d(c.d), t = odd_series(atan64::kSeries, (a * d - b * n) / (a * n + b * d));
  const Extended angle =
      (left ? negated(t) : t) + Extended(c.angle[left].low) + Extended(c.angle[left].high);
  return stored<uint64_t>(angle.value) | (y & kSign<uint64_t>);
}

static uint64_t atan_model(uint64_t x, uint64_t, std::string_view) {
  if (is_nan(x)) return x | kQuiet<uint64_t>;
  if (magnitude(x) == kInfinity<uint64_t>) return edge(x, kOne<uint64_t>);
  return turned(x, kOne<uint64_t>);
}
static uint64_t atan2_model(uint64_t y, uint64_t x, std::string_view) {
  if (is_nan(y)) return y | kQuiet<uint64_t>;
  if (is_nan(x)) return x | kQuiet<uint64_t>;
  return on_an_edge(y, x) ? edge(y, x) : turned(y, x);
}

// ---- Comparison

// Runs of ordinary arguments beside runs of any patterns, so that blocks of both kinds come up;
// every fourth is within 2^-9 of the ends of the domain or of the fold.
template <class U>
static std::vector<U> arguments(double bound, uint64_t seed, int count) {
  using Real = typename Format<U>::Real;
  Random random{seed};
  std::vector<U> all;
  for (int i = 0; i < count; ++i) {
    if (i % 64 < 8) {
      all.push_back(any_pattern<U>(random));
      continue;
    }
    double x = bound * random.unit();
    if (i % 4 == 1) x = std::ldexp(1 + random.unit(), -int(random.next() % 40));
    if (i % 4 == 2) x = 1 - std::ldexp(random.unit(), -int(random.next() % 30));
    if (i % 8 == 3) x = 0.5 + std::ldexp(random.unit() - 0.5, -int(random.next() % 20));
    const volatile Real rounded = Real(x);
    all.push_back(bits(Real(rounded)) | (U(random.next() & 1) << (8 * sizeof(U) - 1)));
  }
  return all;
}

template <class U>
using Model = U (*)(U, U, std::string_view);

template <class U>
static void expect_model(std::string_view family, double bound, int count, Model<U> model) {
  const std::vector<U> x = arguments<U>(bound, 7, count), y = arguments<U>(bound, 11, count);
  std::vector<U> out(x.size());
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    f.call({{x.data(), y.data()}, {out.data()}, nullptr}, count);
    int failures = 0;
    for (int i = 0; i < count && failures < 10; ++i)
      if (const U want = model(x[i], y[i], f.grade); out[i] != want)
        ADD_FAILURE() << f.name << " element " << std::dec << i << " (0x" << std::hex << x[i]
                      << ", 0x" << y[i] << "): got 0x" << out[i] << ", wanted 0x" << want << " "
                      << ++failures;
  }
}

TEST(Model, ArcsineSingle) { expect_model<uint32_t>("Asin", 1, 60000, asin_model); }
TEST(Model, ArccosineSingle) { expect_model<uint32_t>("Acos", 1, 60000, acos_model); }
TEST(Model, ArctangentSingle) { expect_model<uint32_t>("Atan", 10, 60000, atan_model); }
TEST(Model, AngleSingle) { expect_model<uint32_t>("Atan2", 10, 60000, atan2_model); }
TEST(Model, ArcsineDouble) { expect_model<uint64_t>("Asin", 1, 60000, asin_model); }
TEST(Model, ArccosineDouble) { expect_model<uint64_t>("Acos", 1, 60000, acos_model); }
TEST(Model, ArctangentDouble) { expect_model<uint64_t>("Atan", 10, 60000, atan_model); }
TEST(Model, AngleDouble) { expect_model<uint64_t>("Atan2", 10, 60000, atan2_model); }

// A processor that takes subnormal operands for zeros must not be seen in a result, nor where in a
// block an element stands.
TEST(Environment, NeitherDenormalsAreZeroNorPositionMatters) {
  constexpr int kCount = 4000;
  std::vector<uint32_t> x = arguments<uint32_t>(1, 3, kCount),
                        y = arguments<uint32_t>(1, 4, kCount);
  for (int i = 0; i < kCount; i += 5) x[i] &= 0x807FFFFF;
  for (int i = 0; i < kCount; i += 7) y[i] &= 0x807FFFFF;
  std::vector<uint32_t> want(kCount), out(kCount);
  for (const Function& f : kFunctions) {
    if (!f.is("Asin", "32f") && !f.is("Acos", "32f") && !f.is("Atan", "32f") &&
        !f.is("Atan2", "32f"))
      continue;
    f.call({{x.data(), y.data()}, {want.data()}, nullptr}, kCount);
    set({kDefaultControl, kDefaultMxcsr | 0x40});
    f.call({{x.data(), y.data()}, {out.data()}, nullptr}, kCount);
    set({});
    EXPECT_EQ(out, want) << f.name << " with denormals as zeros";
    for (int i = 0; i < kCount; ++i) f.call({{&x[i], &y[i]}, {&out[i]}, nullptr}, 1);
    EXPECT_EQ(out, want) << f.name << " one by one";
  }
}
