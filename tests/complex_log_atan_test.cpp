// SPDX-License-Identifier: MIT
//
// Complex logarithms, arc tangent and inverse hyperbolic tangent: where the plain formulas lose all
// bits, exact results, symmetries, poles.
#include <gtest/gtest.h>

#include <cmath>

#include "luxvmk3_scalar.h"
#include "tests/support.h"

static bool same_number(double a, double b) { return same(bits(a), bits(b)); }

// Points whose squared distance from the origin is 1 + count 2^exponent: representations of
// 2^-exponent + count, a prime, as a sum of two squares. log|z| is half of it, less a square that
// does not show.
TEST(ComplexLog, NextToTheUnitCircle) {
  const struct {
    double a, b, count;
    int exponent;
  } points[] = {
      {0x1.76a3973e09a9ap-1, 0x1.5cfbd1990d1ffp-1, 165, -106},
      {0x1.cf34d97afeea8p-1, 0x1.b44630dd2b032p-2, 177, -106},
      {0x1.f5d111e08abecp-1, 0x1.966dc2ade5c6cp-3, -407, -106},
      {0x1.e7e60502a0fb0p-1, 0x1.367a310575591p-2, 33, -108},
      {0x1.ecfad3bd9dc9bp-1, 0x1.14837211818ebp-2, -227, -108},
      {0x1.ff8cf031f13a4p-1, 0x1.572db4320ebd4p-5, -135, -110},
      {0x1.fffaa3277766ep-1, 0x1.286995d2ff410p-7, 705, -110},
      {0x1.fef160d65a47ap-1, 0x1.0712cdfc4da97p-4, 3601, -112},
      {0x1.ff51818eb9420p-1, 0x1.a691240038aa6p-5, -10007, -112},
      {0x1.ff1e03da60304p-1, 0x1.e0d79212afccdp-5, 19497, -114},
      {0x1.ff4d470968019p-1, 0x1.aba72a693c261p-5, -26175, -114},
      {1 - 0x1p-53, 0x1p-26, 1, -106},
      // Rounded: what the sum of the leading squares loses, 2^-96, is 500 units of the result.
      {0x1.fffffffeffffdp-1, 0x1.fffffffep-17, -0x1.800dffff3ff81p-51, 0},
      {1, 0x1p-500, 1, -1000},
  };
  for (const auto& p : points)
    for (int image = 0; image < 8; ++image) {
      Lux64fc z = {image & 1 ? p.b : p.a, image & 1 ? p.a : p.b};
      if (image & 2) z.re = -z.re;
      if (image & 4) z.im = -z.im;
      EXPECT_EQ(noxclog_scalar(z).re, std::ldexp(p.count, p.exponent - 1)) << z.re << " " << z.im;
    }
}

TEST(ComplexLog, PowersOfTenOnTheAxes) {
  double power = 1;
  for (int k = 0; k <= 22; ++k, power *= 10)
    for (const Lux64fc z : {Lux64fc{power, 0.0}, {-power, 0.0}, {0.0, power}, {-0.0, -power}}) {
      EXPECT_EQ(noxclog10_scalar(z).re, k);
      const Lux32fc narrow = {float(z.re), float(z.im)};
      Lux32fc result;
      if (k > 10) continue;  // further ones are no floats
      ASSERT_EQ(luxsLog10_32fc_A24(&narrow, &result, 1), LUX_OK);
      EXPECT_EQ(result.re, k);
    }
}

// Any patterns, and moderate numbers.
template <class Check>
static void for_any_number(Check check) {
  Random random{12};
  for (int k = 0; k < 20000; ++k) {
    Lux64fc z = {std::bit_cast<double>(any_pattern<uint64_t>(random)),
                 std::bit_cast<double>(any_pattern<uint64_t>(random))};
    if (k % 2) z = {4 * random.unit() - 2, 4 * random.unit() - 2};
    check(z);
  }
}

TEST(ComplexLogAtan, ConjugatesGiveConjugates) {
  for (const auto f : {noxclog_scalar, noxclog10_scalar, noxcatan_scalar, noxcatanh_scalar})
    for_any_number([f](Lux64fc z) {
      const Lux64fc w = f(z), v = f({z.re, -z.im});
      if (std::isnan(z.re) || std::isnan(z.im)) return;
      ASSERT_TRUE(same_number(w.re, v.re) && same_number(w.im, -v.im)) << z.re << " " << z.im;
    });
}

TEST(ComplexAtan, OddAndTurnedAtanh) {
  for_any_number([](Lux64fc z) {
    if (std::isnan(z.re) || std::isnan(z.im)) return;
    const Lux64fc w = noxcatanh_scalar(z), opposite = noxcatanh_scalar({-z.re, -z.im});
    ASSERT_TRUE(same_number(w.re, -opposite.re) && same_number(w.im, -opposite.im));
    const Lux64fc turned = noxcatan_scalar({z.im, -z.re});
    ASSERT_TRUE(same_number(turned.re, w.im) && same_number(turned.im, -w.re));
  });
}

TEST(ComplexLogAtan, PolesDivideByZero) {
  const struct {
    Lux64fc (*f)(Lux64fc);
    Lux64fc z;
  } poles[] = {{noxclog_scalar, {0.0, -0.0}}, {noxclog10_scalar, {-0.0, 0.0}},
               {noxcatanh_scalar, {1, 0.0}},  {noxcatanh_scalar, {-1, -0.0}},
               {noxcatan_scalar, {0.0, -1}},  {noxcatan_scalar, {-0.0, 1}}};
  for (const auto& [f, z] : poles) {
    set({});
    const Lux64fc w = f(z);
    const uint16_t flags = x87_flags();
    EXPECT_TRUE(std::isinf(w.re) || std::isinf(w.im)) << z.re << " " << z.im;
    EXPECT_EQ(flags & (kInvalid | kZeroDivide), kZeroDivide) << z.re << " " << z.im;
  }
}
