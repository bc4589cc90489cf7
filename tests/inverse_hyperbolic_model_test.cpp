// SPDX-License-Identifier: MIT
//
// Bit for bit against plain models of the inverse hyperbolic methods: MPFR at 24, 53 or 64 bits for
// each step, one element at a time, exponents and cells by division instead of bit fields.
#include <gtest/gtest.h>

#include <cmath>
#include <string_view>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// The tables are data; the models look up in their own way.
namespace single {
#include "kernels/hyper/generated/log1p_32f_table.h"
}
namespace twice {
#include "kernels/hyper/generated/log1p_64f_table.h"
}

using Grade = std::string_view;

enum Family { kAcosh, kAsinh, kAtanh };

// ---- Numbers

// 2^e <= x < 2^(e + 1)
template <class N>
static int exponent_of(const N& x) {
  return int(mpfr_get_exp(x.value)) - 1;
}

// s of ln(1 + s); the single A21 and A11 take the root of asinh through a quotient, as doubles do.
template <class N>
static N argument(Family family, const N& a, bool quotient) {
  const N one(1);
  switch (family) {
    case kAcosh:
      return root((a + one) * (a - one)) + (a - one);
    case kAsinh: {
      const N square = a * a, r = root(square + one);
      return quotient ? square / (r + one) + a : r - one + a;
    }
    default:
      return (a + a) / (one - a);
  }
}

// ---- Singles

static Extended cubic(int cell, const Extended& u) {
  const auto& c = single::kCubic[cell];
  return ((Extended(c.c3) * u + Extended(c.c2)) * u + Extended(c.c1)) * u + Extended(c.c0);
}
static int cell_of(const Single& w, int e) { return int((plain(scaled(w, -e)) - 1) * 512); }

static Extended log1p_long(const Extended& s) {
  const Single w = as<Single>(s + Extended(1));
  const int e = exponent_of(w);
  const Double offset = scaled(Double(1), -e) - Double(1);
  const Extended u = as<Extended>(scaled(as<Double>(s), -e)) + as<Extended>(offset);
  return cubic(cell_of(w, e), u) + Extended(single::kExponent[e].log);
}

template <int kTerms>
static Single log1p_packed(const float (&p)[kTerms], const Single& s) {
  const Single one(1), w = (s + one) * Single(0x1.6a09e6p+0);
  const int e = exponent_of(w);
  const Single power = scaled(one, e), t = (s + (one - power)) / (s + (one + power)),
               square = t * t;
  Single sum(p[0]);
  for (int k = 1; k < kTerms; ++k) sum = sum * square + Single(p[k]);
  return (t + t + t * square * sum) + Single(e) * Single(float(single::kLn2));
}

static uint32_t finite(Family family, uint32_t a, Grade grade) {
  const Single x = number<Single>(a);
  if (plain(x) >= 0x1p62) {
    const int e = exponent_of(x);
    const Extended u = as<Extended>(scaled(x, -e)) - Extended(1);
    return stored<uint32_t>(
        (cubic(cell_of(x, e), u) + Extended(e + 1) * Extended(single::kLn2)).value);
  }
  const int halved = family == kAtanh ? -1 : 0;
  if (grade == "A24")
    return stored<uint32_t>(
        scaled(log1p_long(argument(family, as<Extended>(x), false)), halved).value);
  if (family != kAcosh && plain(x) < 0x1p-12) return a;
  const Single s = argument(family, x, true);
  return stored<uint32_t>(
      scaled(grade == "A21" ? log1p_packed(single::kLong, s) : log1p_packed(single::kShort, s),
             halved)
          .value);
}

// ---- Doubles

// ln(1 + s), or ln of 2^(shift + 1) (1 + s).
static Extended log1p_long(const Extended& s, const Extended* shift) {
  const Double w = as<Double>(s + Extended(1));
  int e = exponent_of(w);
  // Ties go up, into the next power of two after the last cell.
  int cell = int(std::floor((plain(scaled(w, -e)) - 1) * 512 + 0.5));
  if (cell == 512) {
    cell = 0;
    ++e;
  }
  const auto& c = twice::kCell[cell];
  const Extended factor = scaled(Extended(c.reciprocal), -e),
                 z = s * factor + (factor - Extended(1));
  Extended p(twice::kP[0]);
  for (int k = 1; k < 5; ++k) p = p * z + Extended(twice::kP[k]);
  Extended high(twice::kExponent[e].high), low(twice::kExponent[e].low);
  if (shift) {
    const Extended whole = *shift + Extended(e + 1);
    high = whole * Extended(twice::kLn2[0]);
    low = whole * Extended(twice::kLn2[1]);
  }
  return (p * (z * z) + (Extended(c.low) + low) + z) + (Extended(c.high) + high);
}

static uint64_t finite(Family family, uint64_t a, Grade) {
  const Extended x = number<Extended>(a), one(1);
  if (plain(x) >= 0x1p62) {
    const Extended shift(exponent_of(x));
    return stored<uint64_t>(log1p_long(scaled(x, -exponent_of(x)) - one, &shift).value);
  }
  const Extended y = log1p_long(argument(family, x, true), nullptr);
  return stored<uint64_t>(scaled(y, family == kAtanh ? -1 : 0).value);
}

// ---- All

template <class U>
static U model(Family family, U x, Grade grade) {
  const U sign = x & kSign<U>, a = x ^ sign, nan = kSign<U> | kInfinity<U> | kQuiet<U>;
  if (is_nan(x)) return x | kQuiet<U>;
  if (family == kAcosh && (sign || a < kOne<U>)) return nan;
  if (family == kAtanh && a >= kOne<U>) return a == kOne<U> ? sign | kInfinity<U> : nan;
  if (a == 0 || a == kInfinity<U>) return x;
  if (family == kAcosh && a == kOne<U>) return 0;
  return finite(family, a, grade) | sign;
}

// Runs of ordinary arguments beside runs of any patterns, so that blocks of both kinds come up;
// some next to 0, some next to 1 and to where 1 + s passes a power of two.
template <class U>
static std::vector<U> arguments(Family family, uint64_t seed, int count) {
  using Real = typename Format<U>::Real;
  Random random{seed};
  std::vector<U> all;
  for (int i = 0; i < count; ++i) {
    if (i % 64 < 8) {
      all.push_back(any_pattern<U>(random));
      continue;
    }
    double x = random.unit();
    const double small = std::ldexp(1 + random.unit(), -int(random.next() % 54));
    if (family == kAcosh) x = i % 3 == 0 ? 1 + small : i % 3 == 1 ? 1 + 99 * x : std::cosh(4 * x);
    if (family == kAsinh) x = i % 3 == 0 ? small : 100 * x;
    if (family == kAtanh) x = i % 4 == 0 ? small / 2 : i % 4 == 1 ? 1 - small / 2 : x;
    if (i % 8 == 3) {
      const double power =
          std::ldexp(1 + (random.unit() - 0.5) * 0x1p-9, 1 + int(random.next() % 20));
      x = family == kAtanh ? (power - 1) / (power + 1)
                           : (power + (family == kAcosh ? 1 : -1) / power) / 2;
    }
    const volatile Real rounded = Real(x);
    const U sign = family == kAcosh ? 0 : U(random.next() & 1) << (8 * sizeof(U) - 1);
    all.push_back(bits(Real(rounded)) | sign);
  }
  return all;
}

template <class U>
static void expect_model(std::string_view name, Family family) {
  constexpr int kCount = 60000;
  const std::vector<U> x = arguments<U>(family, 7, kCount);
  std::vector<U> out(x.size());
  for (const Function& f : kFunctions) {
    if (!f.is(name, sizeof(U) == 4 ? "32f" : "64f")) continue;
    f.call({{x.data()}, {out.data()}, nullptr}, kCount);
    int failures = 0;
    for (int i = 0; i < kCount && failures < 10; ++i)
      if (const U want = model(family, x[i], f.grade); out[i] != want)
        ADD_FAILURE() << f.name << " element " << std::dec << i << " (0x" << std::hex << x[i]
                      << "): got 0x" << out[i] << ", wanted 0x" << want << " " << ++failures;
  }
}

TEST(Model, AcoshSingle) { expect_model<uint32_t>("Acosh", kAcosh); }
TEST(Model, AsinhSingle) { expect_model<uint32_t>("Asinh", kAsinh); }
TEST(Model, AtanhSingle) { expect_model<uint32_t>("Atanh", kAtanh); }
TEST(Model, AcoshDouble) { expect_model<uint64_t>("Acosh", kAcosh); }
TEST(Model, AsinhDouble) { expect_model<uint64_t>("Asinh", kAsinh); }
TEST(Model, AtanhDouble) { expect_model<uint64_t>("Atanh", kAtanh); }

// A processor that takes subnormal operands for zeros must not be seen in a result, nor where in a
// block an element stands.
TEST(Environment, NeitherDenormalsAreZeroNorPositionMatters) {
  constexpr int kCount = 4000;
  for (const Function& f : kFunctions) {
    const Family family = f.is("Acosh", "32f") ? kAcosh : f.is("Asinh", "32f") ? kAsinh : kAtanh;
    if (family == kAtanh && !f.is("Atanh", "32f")) continue;
    std::vector<uint32_t> x = arguments<uint32_t>(family, 3, kCount), want(kCount), out(kCount);
    for (int i = 0; i < kCount; i += 5) x[i] &= 0x807FFFFF;
    f.call({{x.data()}, {want.data()}, nullptr}, kCount);
    set({kDefaultControl, kDefaultMxcsr | 0x40});
    f.call({{x.data()}, {out.data()}, nullptr}, kCount);
    set({});
    EXPECT_EQ(out, want) << f.name << " with denormals as zeros";
    for (int i = 0; i < kCount; ++i) f.call({{&x[i]}, {&out[i]}, nullptr}, 1);
    EXPECT_EQ(out, want) << f.name << " one by one";
  }
}
