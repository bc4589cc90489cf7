// SPDX-License-Identifier: MIT
//
// Bit for bit against plain models of the hyperbolic functions: MPFR at 24, 53 or 64 bits for each
// step, one element at a time.
#include <gtest/gtest.h>

#include <cmath>
#include <string_view>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// The tables are data; the models look up in their own way.
namespace table32 {
#include "kernels/hyper/generated/hyperbolic_32f_table.h"
}
namespace table64 {
#include "kernels/hyper/generated/hyperbolic_64f_table.h"
}
namespace tangent64 {
#include "kernels/hyper/generated/tanh_64f_table.h"
}

template <class N, class U>
static N magnitude_of(U x) {
  N y;
  set_exact(y.value, U(x & ~kSign<U>));
  return y;
}
template <class N>
static int nearest(const N& x) {
  return int(std::nearbyint(plain(x)));
}
// In steps of 1/64, as the sum with a large double leaves it: rounded twice.
static int cell_of(const Extended& x) {
  const double shifter = 0x1.8p+46;
  return int((plain(x + Extended(shifter)) - shifter) * 64);
}

template <class U>
constexpr U kFirstInfinite = sizeof(U) == 4 ? 0x42B2D4FD : U(0x408633CE8FB9F87E);

// True, and the result in *y, for NaNs and where both functions are infinite.
template <class U>
static bool without_value(U x, bool odd, U* y) {
  const U a = x & ~kSign<U>;
  if (is_nan(x)) *y = x | kQuiet<U>;
  if (!is_nan(x) && a >= kFirstInfinite<U>) *y = kInfinity<U> | (odd ? x ^ a : 0);
  return a >= kFirstInfinite<U>;
}

template <bool kOdd>
static uint32_t single_value(uint32_t x, std::string_view grade) {
  uint32_t y = 0;
  if (without_value(x, kOdd, &y)) return y;
  const uint32_t sign = kOdd ? x & kSign<uint32_t> : 0;
  const Single a = magnitude_of<Single>(x);
  const int j = nearest(a * Single(32));
  const Single r = a - Single(j / 32.0);
  if (grade == "A24") {
    const Single s(std::fmax(std::fabs(plain(r)), 0x1p-20));
    const Single z = s * s * Single(table32::kC2), v = z * Single(table32::kS3OverC2);
    const auto& cell = table32::kSingleCell[j];
    const Double leading(kOdd ? cell.sinh : cell.cosh), other(kOdd ? cell.cosh : cell.sinh);
    const Double rest(plain(r)), fine(plain(z)), odd(plain(v));
    return sign |
           stored<uint32_t>((leading + (leading * fine + other * (rest + rest * odd))).value);
  }
  if (kOdd && plain(a) < 0x1p-12) return x;
  const auto& cell = table32::kSingleHalves[j];
  const Single leading(kOdd ? cell.sinh : cell.cosh), other(kOdd ? cell.cosh : cell.sinh);
  Single half = leading + other * r;
  if (grade == "A21") {
    const Single z = r * r * Single(table32::kC2), v = z * Single(table32::kS3OverC2);
    half = leading + (leading * z + other * (r + r * v));
  }
  return sign | stored<uint32_t>((half + half).value);
}

template <int kTerms>
static Extended even_series(const double (&c)[kTerms], const Extended& z) {
  Extended sum(c[kTerms - 1]);
  for (int i = kTerms - 2; i >= 0; --i) sum = sum * z + Extended(c[i]);
  return sum * z;
}

template <bool kOdd>
static uint64_t double_value(uint64_t x, std::string_view grade) {
  uint64_t y = 0;
  if (without_value(x, kOdd, &y)) return y;
  const bool best = grade == "A53";
  const Extended a = magnitude_of<Extended>(x);
  const int m =
      plain(a) < 23 ? 0 : nearest((a - Extended(0x1.6a748p+4)) * Extended(table64::kLog2E));
  const Extended moved = a - Extended(m) * Extended(table64::kLn2High);
  const auto& cell = table64::kDoubleCell[cell_of(moved)];
  const Extended r = moved - Extended(cell.x) - Extended(m) * Extended(table64::kLn2Low), z = r * r;
  const Extended p =
      best ? even_series(table64::kCoshLong, z) : even_series(table64::kCoshShort, z);
  const Extended q =
      (best && kOdd ? even_series(table64::kSinhLong, z) : even_series(table64::kSinhShort, z)) *
          r +
      r;
  const Extended leading(kOdd ? cell.sinh : cell.cosh), other(kOdd ? cell.cosh : cell.sinh);
  Extended rest = leading * p + other * q;
  if (best && kOdd) rest = rest + Extended(cell.sinh_low);
  Extended result = leading + rest;
  mpfr_mul_2si(result.value, result.value, m, MPFR_RNDN);
  return stored<uint64_t>(result.value) | (kOdd ? x & kSign<uint64_t> : 0);
}

static uint64_t tangent(uint64_t x, std::string_view) {
  const uint64_t a = x & ~kSign<uint64_t>;
  if (is_nan(x)) return x | kQuiet<uint64_t>;
  if (a >= 0x40330FC100000000u) return kOne<uint64_t> | (x ^ a);
  const Extended magnitude = magnitude_of<Extended>(x);
  const int j = cell_of(magnitude);
  const auto& cell = tangent64::kCell[j];
  const Extended r = magnitude - Extended(j / 64.0);
  const Extended t = even_series(tangent64::kSeries, r * r) * r + r;
  const Extended above = t + Extended(cell.low) + Extended(cell.high);
  return stored<uint64_t>((above / (t * Extended(cell.high) + Extended(1))).value) | (x ^ a);
}

// Runs of ordinary arguments, of arguments up to the bound of overflow and of any patterns, so that
// blocks of every kind come up; among them ties between cells and tiny arguments.
template <class U>
static std::vector<U> arguments(int count) {
  using Real = typename Format<U>::Real;
  Random random{5};
  std::vector<U> all;
  for (int i = 0; i < count; ++i) {
    if (i % 64 < 8) {
      all.push_back(any_pattern<U>(random));
      continue;
    }
    double x = 25 * random.unit();
    if (i % 64 < 24) x = (sizeof(U) == 4 ? 89.42 : 710.48) * random.unit();
    if (i % 8 == 1) x = std::ldexp(1 + random.unit(), -int(random.next() % 60));
    if (i % 8 == 2) x = (2 * int(random.next() % 1500) + 1) / (sizeof(U) == 4 ? 64.0 : 128.0);
    const volatile Real rounded = Real(x);
    all.push_back(bits(Real(rounded)) | (U(random.next() & 1) << (8 * sizeof(U) - 1)));
    if (i % 8 == 2) all.back() += U(random.next() % 3) - 1;
  }
  return all;
}

template <class U>
using Model = U (*)(U, std::string_view);

template <class U>
static void expect_model(std::string_view family, Model<U> model) {
  const std::vector<U> x = arguments<U>(60000);
  std::vector<U> out(x.size());
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    f.call({{x.data()}, {out.data()}, nullptr}, int32_t(x.size()));
    int failures = 0;
    for (size_t i = 0; i < x.size() && failures < 10; ++i)
      if (const U want = model(x[i], f.grade); out[i] != want)
        ADD_FAILURE() << f.name << "(0x" << std::hex << x[i] << "): got 0x" << out[i]
                      << ", wanted 0x" << want << " " << ++failures;
  }
}

TEST(Model, CosineSingle) { expect_model<uint32_t>("Cosh", single_value<false>); }
TEST(Model, SineSingle) { expect_model<uint32_t>("Sinh", single_value<true>); }
TEST(Model, CosineDouble) { expect_model<uint64_t>("Cosh", double_value<false>); }
TEST(Model, SineDouble) { expect_model<uint64_t>("Sinh", double_value<true>); }
TEST(Model, TangentDouble) { expect_model<uint64_t>("Tanh", tangent); }

// Neither a processor that takes subnormal operands for zeros nor the place in a block must be seen
// in a result.
template <class U>
static void expect_same_everywhere(std::string_view family) {
  constexpr int kCount = 4000;
  std::vector<U> x = arguments<U>(kCount), want(kCount), out(kCount);
  for (int i = 0; i < kCount; i += 5) x[i] &= kSign<U> | (2 * kQuiet<U> - 1);
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    f.call({{x.data()}, {want.data()}, nullptr}, kCount);
    set({kDefaultControl, kDefaultMxcsr | 0x40});
    f.call({{x.data()}, {out.data()}, nullptr}, kCount);
    set({});
    EXPECT_EQ(out, want) << f.name << " with denormals as zeros";
    for (int i = 0; i < kCount; ++i) f.call({{&x[i]}, {&out[i]}, nullptr}, 1);
    EXPECT_EQ(out, want) << f.name << " one by one";
  }
}

TEST(Environment, NeitherDenormalsAreZeroNorPositionMatters) {
  for (const auto family : {"Cosh", "Sinh"}) expect_same_everywhere<uint32_t>(family);
  for (const auto family : {"Cosh", "Sinh", "Tanh"}) expect_same_everywhere<uint64_t>(family);
}
