// SPDX-License-Identifier: MIT
//
// Complex powers where the survey of random arguments does not look: symmetry, the axes, results
// next to an axis, terms that cancel, flags.
#include <gtest/gtest.h>
#include <mpc.h>

#include <complex>

#include "luxvmk3_scalar.h"
#include "tests/mpfr_number.h"

using Complex = std::complex<double>;

static Complex power(Complex z, Complex w) {
  const Lux64fc p = noxcpow_scalar({z.real(), z.imag()}, {w.real(), w.imag()});
  return {p.re, p.im};
}

static bool same(double a, double b) { return std::isnan(a) ? std::isnan(b) : bits(a) == bits(b); }
static bool same(Complex a, Complex b) {
  return same(a.real(), b.real()) && same(a.imag(), b.imag());
}

static bool alike(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// Distance of each part from the exact power in units of its last place.
static double worst_part_ulps(Complex z, Complex w) {
  struct Scratch {
    mpc_t z, w;
    Scratch() { mpc_init2(z, 160), mpc_init2(w, 53); }
    ~Scratch() { mpc_clear(z), mpc_clear(w); }
  } exact;
  mpc_set_d_d(exact.z, z.real(), z.imag(), MPC_RNDNN);
  mpc_set_d_d(exact.w, w.real(), w.imag(), MPC_RNDNN);
  mpc_pow(exact.z, exact.z, exact.w, MPC_RNDNN);
  const Complex got = power(z, w);
  double worst = 0;
  for (const auto& [value, part] :
       {std::pair(got.real(), mpc_realref(exact.z)), std::pair(got.imag(), mpc_imagref(exact.z))}) {
    if (mpfr_zero_p(part)) {
      if (value != 0) return INFINITY;
      continue;
    }
    const long exponent = std::max<long>(mpfr_get_exp(part), -1021);
    mpfr_sub_d(part, part, value, MPFR_RNDN);
    mpfr_mul_2si(part, part, 53 - exponent, MPFR_RNDN);
    worst = std::max(worst, std::fabs(mpfr_get_d(part, MPFR_RNDN)));
  }
  return worst;
}

TEST(ComplexPow, IsRightInEachPartForWholeExponents) {
  Random random{17};
  // Where differences of the products vanish.
  const double ratios[] = {
      0, 1, std::sqrt(3), 1 / std::sqrt(3), 1 + std::sqrt(2), std::sqrt(2) - 1};
  for (int k = 0; k < 3000; ++k) {
    const double ratio = ratios[random.next() % 6], y = std::ldexp(random.unit(), k % 400 - 200);
    const double off = 1 + std::ldexp(random.unit() - 0.5, -int(random.next() % 56));
    const double x = ratio == 0 ? random.unit() - 0.5 : y * ratio * off;
    const Complex z(random.next() % 2 ? x : -x, random.next() % 2 ? y : -y);
    for (int n = -4; n <= 4; ++n)
      ASSERT_LE(worst_part_ulps(z, n), 0.75) << x << " " << y << " " << n;
    ASSERT_TRUE(same(power(z, 1), z));
  }
}

TEST(ComplexPow, IsConjugateSymmetric) {
  Random random{41};
  const auto part = [&] {
    const double some[] = {0.0, -0.0, 1, -2, 0.5, INFINITY, -INFINITY, NAN, 0x1p-1074, 1e300};
    return random.next() % 3 ? 8 * random.unit() - 4 : some[random.next() % 10];
  };
  for (int k = 0; k < 20000; ++k) {
    const Complex z(part(), part()), w(part(), part());
    if (w == 0.0) continue;  // 1 + 0i for every base
    const Complex one = power(conj(z), conj(w)), other = conj(power(z, w));
    // Infinite terms leave the signs of zeros open.
    if (std::isfinite(std::norm(z)) && std::isfinite(std::norm(w)))
      EXPECT_TRUE(same(one, other)) << z << " ^ " << w;
    else
      EXPECT_TRUE(alike(one.real(), other.real()) && alike(one.imag(), other.imag()))
          << z << " ^ " << w;
  }
}

TEST(ComplexPow, BasesOnTheAxesStayThere) {
  for (const double size : {1.0, 2.0, 0.5, 3.0})
    for (int n = -30; n <= 30; ++n) {
      if (n == 0 || (size == 3 && n < 0)) continue;
      const double magnitude = std::pow(size, n);
      const Complex unit[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
      for (int k = 0; k < 4; ++k) {
        const Complex want = magnitude * unit[unsigned(k * n) % 4], got = power(size * unit[k], n);
        EXPECT_EQ(got, want) << size * unit[k] << " ^ " << n;
      }
    }
  // Whole turns of any number.
  EXPECT_EQ(power(-1, 0x1p52 + 1), -1.0);
  EXPECT_EQ(power({0, 1}, 0x1p1000), 1.0);
  EXPECT_EQ(power({0, -1}, 0x1p52 + 1), Complex(0, -1));
}

TEST(ComplexPow, WholePowersAreWhole) {
  for (int re = -12; re <= 12; ++re)
    for (int im = -12; im <= 12; ++im) {
      int64_t x = re, y = im;
      for (int n = 1; std::max(std::abs(x), std::abs(y)) < int64_t(1) << 48 && n < 200; ++n) {
        EXPECT_EQ(power({double(re), double(im)}, n), Complex(double(x), double(y)))
            << re << " " << im << " ^ " << n;
        const int64_t product = x * re - y * im;
        y = x * im + y * re, x = product;
      }
    }
}

// A magnitude of e^t and an angle of quarter turns and a little more: the exact zeros nearby must
// not shine through, nor the rounding of the angle.
TEST(ComplexPow, PartsNextToAnAxisAreAccurate) {
  Random random{43};
  double worst = 0;
  for (int k = 0; k < 4000; ++k) {
    const double angle = 1.5707963267948966 * (int(random.next() % 65) - 32) +
                         (random.next() % 2 ? 1 : -1) * std::exp2(-30 * random.unit());
    const Complex product(80 * random.unit() - 40, angle);
    Complex z(8 * random.unit() - 4, 8 * random.unit() - 4), w = product / std::log(z);
    if (k % 4 == 0) {  // a real exponent and a base near the real axis
      z = {z.real(), z.imag() * std::exp2(-60 * random.unit())};
      w = 1 + random.next() % 9;
    } else if (k % 4 == 1) {  // a large exponent and a base near 1
      const double tiny = std::exp2(-40 * random.unit());
      z = {1 + z.real() * tiny, z.imag() * tiny};
      w = product / std::log(z);
    }
    const double ulps = worst_part_ulps(z, w);
    EXPECT_LE(ulps, 1) << std::hexfloat << z << " ^ " << w;
    worst = std::max(worst, ulps);
  }
  RecordProperty("ulp", std::to_string(worst));
}

// Terms of up to 2^45 whose sum is within the range of results.
TEST(ComplexPow, CancellingTermsAreAccurate) {
  Random random{47};
  double worst = 0;
  for (int k = 0; k < 2000; ++k) {
    const Complex z = std::polar(std::exp2(200 * random.unit() - 100), 6.283 * random.unit());
    const Complex product(1400 * random.unit() - 700,
                          (random.next() % 2 ? 1 : -1) * std::exp2(45 * random.unit()));
    const Complex w = product / std::log(z);
    const double ulps = worst_part_ulps(z, w);
    EXPECT_LE(ulps, 0.51) << std::hexfloat << z << " ^ " << w;
    worst = std::max(worst, ulps);
  }
  RecordProperty("ulp", std::to_string(worst));
}

TEST(ComplexPow, RaisesWhatTheResultIs) {
  const struct {
    Complex z, w;
    uint16_t raised, clear;
  } rows[] = {
      {{3, 4}, {2, 0.5}, 0, kAllFlags & ~kInexact},
      {{1e-300, 1e-300}, {0.5, 0}, 0, kUnderflow | kOverflow | kInvalid | kZeroDivide},
      {{1e-200, 1e200}, {1, 1e-30}, 0, kUnderflow | kOverflow | kInvalid | kZeroDivide},
      {{3, 4}, {1000, 100}, 0, kUnderflow | kInvalid | kZeroDivide},
      {{1e200, 1e200}, {2, 1}, kOverflow, kInvalid | kZeroDivide},
      {{1e-200, 1e-200}, {2, 1}, kUnderflow, kInvalid | kZeroDivide},
      {{0, 0}, {-1, 2}, kZeroDivide, kInvalid | kOverflow},
      {{INFINITY, 1}, {2, 0}, 0, kAllFlags & ~kInexact},
  };
  for (const auto& row : rows) {
    set({});
    const Lux64fc p = noxcpow_scalar({row.z.real(), row.z.imag()}, {row.w.real(), row.w.imag()});
    const uint16_t flags = x87_flags();
    EXPECT_EQ(flags & row.raised, row.raised) << row.z << " ^ " << row.w << " " << p.re;
    EXPECT_EQ(flags & row.clear, 0) << row.z << " ^ " << row.w << " " << p.re;
  }
  EXPECT_TRUE(x87_stack_empty());
}

TEST(ComplexPow, SinglesAreTheDoublesRounded) {
  Random random{53};
  for (int k = 0; k < 5000; ++k) {
    const auto part = [&] { return float((8 * random.unit() - 4) * std::exp2(k % 20)); };
    const Lux32fc z = {part(), part()}, w = {part(), part()};
    Lux32fc got;
    ASSERT_EQ(luxsPow_32fc_A24(&z, &w, &got, 1), LUX_OK);
    const Lux64fc wide = noxcpow_scalar({z.re, z.im}, {w.re, w.im});
    EXPECT_EQ(bits(got.re), bits(float(wide.re)));
    EXPECT_EQ(bits(got.im), bits(float(wide.im)));
  }
}
