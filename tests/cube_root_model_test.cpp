// SPDX-License-Identifier: MIT
//
// The double-precision cube root and both reciprocal cube roots, bit for bit against plain models
// of their methods: MPFR at the precision of each step, tabulated values computed anew. Fitted
// coefficients are data.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "kernels/roots/generated/invcbrt_32f_table.h"
#include "tests/catalog.h"
#include "tests/mpfr_number.h"

using Exact = Number<200>;

// x^(d/3) for d = 1, 2, -1
static Exact third_power(Exact x, int d) {
  if (d == 2) x = x * x;
  mpfr_cbrt(x.value, x.value, MPFR_RNDN);
  return d < 0 ? Exact(1) / x : x;
}

// A finite number that is not 0, as significand and exponent.
template <class U>
struct Parts {
  int exponent;
  U significand;  // the pattern of a number from 1 to 2
};
template <class U>
static Parts<U> parts(U x) {
  constexpr int m = Format<U>::mantissa, bias = Format<U>::bias;
  U fraction = x & ((U(1) << m) - 1);
  int exponent = int((x & ~kSign<U>) >> m);
  if (exponent == 0) {
    for (exponent = 1; !(fraction >> m); --exponent) fraction <<= 1;
    fraction ^= U(1) << m;
  }
  return {exponent - bias, fraction | kOne<U>};
}

static int floor_third(int e) { return (e + 3000) / 3 - 1000; }

// What is not finite or 0 is left to the tables of special values.
template <class U>
static U special(U x, bool inverse) {
  const U sign = x & kSign<U>, a = x ^ sign;
  if (is_nan(x)) return x | kQuiet<U>;
  if (!inverse) return x;
  return a == 0 ? sign | kInfinity<U> : sign;
}
template <class U>
static bool is_special(U x) {
  return (x & ~kSign<U>) == 0 || (x & kInfinity<U>) == kInfinity<U>;
}

// ---- Double precision

constexpr double kRoot[5] = {0x1.ea09faafaced5p-6, -0x1.511c244def3e8p-5, 0x1.f9add28df8e66p-5,
                             -0x1.c71c71c6fb218p-4, 0x1.555555555554cp-2};
constexpr double kInverse[5] = {-0x1.fa191824b7f72p-4, 0x1.26f7e329efea6p-3, -0x1.61f9ac6984800p-3,
                                0x1.c71c71c6cdc98p-3, -0x1.5555555555529p-2};

struct Leading {
  Extended high, low;
};

template <bool inverse>
static uint64_t root_64f(uint64_t x) {
  static const std::vector<Leading> table = [] {
    std::vector<Leading> all;
    for (int r = 0; r < 3; ++r)
      for (int j = 0; j < 256; ++j) {
        const Exact h =
            third_power(1 + j / 256.0, inverse ? -1 : 1) * (r ? third_power(2.0, r) : Exact(1));
        const auto high = as<Double>(h);
        all.push_back({as<Extended>(high), as<Extended>(as<Single>(h - as<Exact>(high)))});
      }
    return all;
  }();
  if (is_special(x)) return special(x, inverse);

  const auto [exponent, significand] = parts(x);
  const int e = inverse ? -exponent : exponent, q = floor_third(e), r = e - 3 * q;
  const uint32_t j = significand >> 44 & 255;
  const Exact start(1 + j / 256.0);
  const auto rest = as<Extended>(number<Exact>(significand) - start);
  const Extended t = rest * as<Extended>(as<Double>(Exact(1) / start));
  Extended p((inverse ? kInverse : kRoot)[0]);
  for (int k = 1; k < 5; ++k) p = p * t + Extended((inverse ? kInverse : kRoot)[k]);
  const auto& [high, low] = table[r * 256 + j];
  return stored<uint64_t>(scaled(p * t * high + low + high, q).value) | (x & kSign<uint64_t>);
}

// ---- Single precision, reciprocal

static uint32_t a24(uint32_t x) {
  if (is_special(x)) return special(x, true);
  const auto [exponent, significand] = parts(x);
  const int q = floor_third(-exponent), r = -exponent - 3 * q;
  const uint32_t j = significand >> 15 & 255;
  const auto& table = static_const_table;
  const auto m = number<Double>(significand);
  const Double y = (Double(table.c2[j]) * m + Double(table.c1[j])) * m + Double(table.c0[j]);
  const auto factor = r ? as<Double>(third_power(2.0, r)) : Double(1);
  return stored<uint32_t>(scaled(y * factor, q).value) | (x & kSign<uint32_t>);
}

template <bool refined>
static uint32_t packed(uint32_t x) {
  if (is_special(x)) return special(x, true);
  const uint32_t sign = x & kSign<uint32_t>;
  uint32_t a = x ^ sign;
  const bool subnormal = a < 0x00800000;
  if (subnormal) a = stored<uint32_t>(Single(2.0 * a).value);
  const uint32_t upper = uint32_t((a >> 16) * 21845.0 / 65536);
  const uint32_t lower = uint32_t((a & 0xFFFF) * 21845.0 / 65536);
  const auto v = number<Single>(a), one = Single(1);
  auto y = number<Single>(kStart - (upper << 16 | lower));
  const Single c = (v * y) * (y * y);
  y = y * ((Single(kStep[2]) * c + Single(kStep[1])) * c + Single(kStep[0]));
  if (refined) y = y + (y * (one / Single(3))) * (one - (v * y) * (y * y));
  return stored<uint32_t>(scaled(y, subnormal ? 50 : 0).value) | sign;
}

// ---- The comparison

// Every exponent, both ends of every cell, runs with and without special elements.
template <class U>
static std::vector<U> arguments(int count) {
  constexpr int m = Format<U>::mantissa;
  Random random{29};
  std::vector<U> all;
  for (int i = 0; i < count; ++i) {
    const U r = any_pattern<U>(random), cell = U(random.next() % 256) << (m - 8);
    const U exponent = r & (kInfinity<U> | kSign<U>), normal = U(1 + i % 200) << m;
    all.push_back(i % 64 < 8 ? r : (r & ~kInfinity<U>) | normal);
    all.push_back((i % 64 < 16 ? exponent : normal) | cell | (i % 3));
    all.push_back(normal + cell - 1 - i % 2);
    if (i % 64 < 4) all.push_back((r & ~kInfinity<U>) >> (i % 5 * 9 % m));  // subnormal
  }
  return all;
}

template <class U>
static void expect_model(std::string_view family, std::string_view grades, U (*model)(U)) {
  const auto x = arguments<U>(30000);
  std::vector<U> want(x.size()), out(x.size());
  for (size_t i = 0; i < x.size(); ++i) want[i] = model(x[i]);
  int found = 0;
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    if (grades.find(f.grade) == grades.npos) continue;
    ++found;
    for (const size_t len : {x.size(), size_t(67)}) {
      f.call({{x.data()}, {out.data()}, nullptr}, int32_t(len));
      int failures = 0;
      for (size_t i = 0; i < len && failures < 10; ++i)
        if (out[i] != want[i])
          ADD_FAILURE() << f.name << "(0x" << std::hex << x[i] << "): got 0x" << out[i]
                        << ", wanted 0x" << want[i] << " " << ++failures;
    }
  }
  EXPECT_GT(found, 0);
}

TEST(Model, CbrtDouble) { expect_model("Cbrt", "A50 A53", root_64f<false>); }
TEST(Model, InvCbrtDouble) { expect_model("InvCbrt", "A50 A53", root_64f<true>); }
TEST(Model, InvCbrtSingle) { expect_model("InvCbrt", "A24", a24); }
TEST(Model, InvCbrtSinglePacked) {
  expect_model("InvCbrt", "A21", packed<true>);
  expect_model("InvCbrt", "A11", packed<false>);
}

// A wrong table entry moves a root by more than the half unit that keeps these exact.
TEST(Exact, CubeRootsOfCubes) {
  std::vector<double> cubes, roots;
  for (int n = -200000; n <= 200000; n += 7) {
    cubes.push_back(double(n) * n * n);
    roots.push_back(n);
  }
  std::vector<double> out(cubes.size());
  EXPECT_EQ(luxsCbrt_64f_A53(cubes.data(), out.data(), int32_t(out.size())), LUX_OK);
  EXPECT_EQ(out, roots);
}

// Reports come in order, and each grade makes the same ones.
TEST(InvCbrt, LastPoleIsTheStatus) {
  const float x[9] = {1, 0, 8, -8, -0.0f, 2, 3, 4, 0};
  float y[9];
  for (const auto f : {luxsInvCbrt_32f_A11, luxsInvCbrt_32f_A21, luxsInvCbrt_32f_A24}) {
    EXPECT_EQ(f(x, y, 9), LUX_POLE);
    EXPECT_TRUE(std::isinf(y[1]) && std::isinf(y[4]) && std::isinf(y[8]) && y[4] < 0);
    EXPECT_NEAR(y[3], -0.5, 0x1p-12);
  }
}
