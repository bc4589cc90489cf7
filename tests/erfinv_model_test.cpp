// SPDX-License-Identifier: MIT
//
// Bit for bit against plain models of the inverse error function: MPFR at 24, 53 or 64 bits for
// each step, cells by comparison, one element at a time.
#include <gtest/gtest.h>

#include <cmath>
#include <string_view>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// The tables are data; the models look up in their own way.
namespace erfinv32 {
#include "kernels/erf/generated/erfinv_32f_table.h"
}
namespace erfinv64 {
#include "kernels/erf/generated/erfinv_64f_table.h"
}

template <class To, class U>
static To magnitude(U x) {
  To y;
  set_exact(y.value, U(x & ~kSign<U>));
  return y;
}

// The number of the nearest w = 2^-e (1 + j/cells), counted from 2^first up; halfway the larger.
static int nearest_cell(double w, int first, int cells) {
  int exponent;
  const double significand = 2 * std::frexp(w, &exponent);
  return (exponent - 1 - first) * cells + int(std::floor((significand - 1) * cells + 0.5));
}

template <class N, class C>
static N horner(const C& coefficients, const N& u) {
  N sum(coefficients[0]);
  for (size_t k = 1; k < sizeof coefficients / sizeof coefficients[0]; ++k)
    sum = sum * u + N(coefficients[k]);
  return sum;
}

static uint32_t below_one(uint32_t x, std::string_view grade) {
  const Single a = magnitude<Single>(x), w = Single(1) - a;
  if (grade != "A24" && (x & 0x7FFFFFFF) < 0x01000000) {  // one product, rounded once
    return stored<uint32_t>((Extended(0xE2DFC48Ep-32) * as<Extended>(a)).value);
  }
  const int cell = nearest_cell(mpfr_get_d(w.value, MPFR_RNDN), erfinv32::kFirstBinade,
                                1 << erfinv32::kCellBits);
  const Single& u = cell < 23 * 16 ? w : a;
  if (grade == "A24")
    return stored<uint32_t>(horner(erfinv32::kQuintic[cell], as<Double>(u)).value);
  if (grade == "A21") return stored<uint32_t>(horner(erfinv32::kCubic[cell], u).value);
  return stored<uint32_t>(horner(erfinv32::kLinear[cell], u).value);
}

// Odd and even powers of t by themselves, the two lowest coefficients in two parts.
static uint64_t below_one(uint64_t x, std::string_view) {
  const Extended a = magnitude<Extended>(x);
  const double w = mpfr_get_d((Extended(1) - a).value, MPFR_RNDN);
  const auto& cell =
      erfinv64::kCell[nearest_cell(w, erfinv64::kFirstBinade, 1 << erfinv64::kCellBits)];
  const Extended t = a - Extended(cell.centre), square = t * t;
  Extended part[2] = {Extended(cell.upper[0]), Extended(cell.upper[1])};
  for (int k = 2; k < 10; ++k) part[k % 2] = part[k % 2] * square + Extended(cell.upper[k]);
  Extended y = part[1] + t * part[0];
  for (const int k : {1, 0}) y = Extended(cell.c[k]) + (Extended(cell.c_low[k]) + t * y);
  return stored<uint64_t>(y.value);
}

template <class U>
static U model(U x, std::string_view grade) {
  const U sign = x & kSign<U>, a = x ^ sign;
  if (is_nan(x)) return x | kQuiet<U>;
  if (a > kOne<U>) return kSign<U> | kInfinity<U> | kQuiet<U>;
  return sign | (a == kOne<U> ? kInfinity<U> : below_one(x, grade));
}

// Even in the argument, in its logarithm and in that of its distance to 1; both sides of every
// bound between cells; zeros, subnormals, the pole and what lies beyond.
template <class U, class E>
static std::vector<U> arguments(int binades, int cells) {
  Random random{7};
  std::vector<U> all = {0, 1, 2, kOne<U> - 2, kOne<U> - 1, kOne<U>, kOne<U> + 1, kInfinity<U>};
  for (int i = 0; i < 20000; ++i) {
    all.push_back(bits(E(random.unit())));
    all.push_back(bits(E(1 - std::ldexp(1 + random.unit(), -1 - i % binades))));
    all.push_back(U(random.next()) % kOne<U>);
    all.push_back(U(random.next()) % (U(4) << Format<U>::mantissa));
  }
  for (int exponent = 1; exponent <= binades; ++exponent)
    for (int half = 0; half < 2 * cells; ++half) {
      const U edge = bits(E(1 - std::ldexp(1 + half / (2.0 * cells), -exponent)));
      for (int offset = -2; offset <= 2; ++offset) all.push_back(edge + U(offset));
    }
  for (size_t i = 1; i < all.size(); i += 2) all[i] |= kSign<U>;
  return all;
}

template <class U>
static void expect_model(const std::vector<U>& x) {
  for (const Function& f : kFunctions) {
    if (!f.is("ErfInv", sizeof(U) == 4 ? "32f" : "64f")) continue;
    std::vector<U> out(x.size());
    f.call({{x.data()}, {out.data()}, nullptr}, int32_t(x.size()));
    int failures = 0;
    for (size_t i = 0; i < x.size() && failures < 10; ++i)
      if (const U want = model(x[i], f.grade); out[i] != want)
        ADD_FAILURE() << f.name << "(0x" << std::hex << x[i] << "): got 0x" << out[i]
                      << ", wanted 0x" << want << " " << ++failures;
  }
}

TEST(ErfInvModel, Singles) { expect_model(arguments<uint32_t, float>(24, 16)); }
TEST(ErfInvModel, Doubles) { expect_model(arguments<uint64_t, double>(53, 8)); }
