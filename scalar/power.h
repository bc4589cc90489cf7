// SPDX-License-Identifier: MIT
//
// What the extended and the complex power share: logarithms and angles, short ones of 64 bits and
// long ones of about 120, and the way back by 2^t and the point of the unit circle.
//
//   log2 x = e + log2(1/R) + log2(1 + z),  x = 2^e m, i = round(256 (m - 1)), z = m R[i] - 1
//   angle of (x, y), y <= x, = angle(i/64) + angle(s),  i = round(64 y/x),
//                              s = (y - x i/64) / (x + y i/64), whose numerator is exact
//   2^t = 2^n T[j] 2^r,  t = n + j/128 + r
//   sine and cosine of an angle a = j/32 + d by the addition theorems
//
// Angles are counted in right angles, so that those of the axes and of the diagonals, and their
// products by doubles, are exact. R[0] = 1 and R[256] = 1/2, so that nothing cancels next to 1.
#ifndef LUX_SCALAR_POWER_H
#define LUX_SCALAR_POWER_H

#include "core/bits.h"
#include "luxvmk3.h"
#include "scalar/power_table.h"

struct ExtendedWords {
  uint32_t lower, upper;
  uint16_t exponent;  // and sign
} __attribute__((may_alias));

// The load keeps the compiler from making an extended constant of a constant pair, whose own load
// costs more than this addition.
static inline long double whole(const DoublePair& pair) {
  return load_extended(&pair.high) + pair.low;
}

// To the nearest integer.
static inline int32_t rounded(long double x) {
  int32_t nearest;
  asm("fistl %0" : "=m"(nearest) : "t"(x));
  return nearest;
}

// ---- Logarithm to base 2

// x = 2^exponent m of a positive normal number, with the cell of m.
struct Reduced {
  long double m;
  int32_t exponent;
  uint32_t cell;
};

// The processor forwards significand and exponent apart from each other, so m can be loaded from
// the significand that was stored and a new exponent.
static inline Reduced reduced(long double x) {
  ExtendedWords words;
  Reduced result;
  asm("fstpt %0" : "=m"(words) : "t"(x) : "st");
  result.exponent = words.exponent - 16383;
  result.cell = ((words.upper & 0x7FFFFFFF) + 0x400000) >> 23;
  words.exponent = 16383;
  asm("fldt %1" : "=t"(result.m) : "m"(words));
  return result;
}

static inline long double polynomial(const double* c, int count, long double x) {
  long double value = c[0];
#pragma GCC unroll 8
  for (int i = 1; i < count; ++i) value = value * x + c[i];
  return value;
}

// To 2^-63 of 1 or of the logarithm, whichever is larger.
static inline long double log2_short(const Reduced& x) {
  const auto& cell = power_table.cell[x.cell];
  const long double z = x.m * cell.reciprocal - 1.0f;
  const long double tail = polynomial(power_table.c, 6, z) * z + power_table.c0_low;
  return (tail + power_table.c0_high) * z + cell.middle + (x.exponent + (long double)cell.high);
}

// z - z^2/2 + z^3/3 - ... to z^14, |z| < 0.0022: the terms from z^7 on with 64 bits.
static inline TwoPart log1p_series(const TwoPart& z) {
  const TwoPart* const inverse = power_table.inverse;
  const long double x = z.high;
  long double rest = -1.0L / 14;
  for (int k = 13; k >= 7; --k) rest = rest * x + (k % 2 ? 1.0L : -1.0L) / k;
  TwoPart sum = z * rest;
  for (int k = 6; k >= 1; --k) {
    sum = (k % 2 ? inverse[k] : -inverse[k]) + sum;
    sum = sum * z;
  }
  return sum;
}

// Of x, whose difference from 1 is given beside it: where that is small it alone counts. To 2^-115
// of the logarithm.
static TwoPart log2_long(const TwoPart& x, const TwoPart& x_minus_1) {
  const Reduced reduction = reduced(x.high);
  const auto& cell = power_table.cell[reduction.cell];
  TwoPart z = x_minus_1;
  if (cell.reciprocal != (reduction.exponent == 0 ? 1.0 : 0.5) ||
      uint32_t(reduction.exponent + 1) > 1) {
    const TwoPart product = exact_product(reduction.m, cell.reciprocal);
    const long double low = x.low * power_of_two(-reduction.exponent) * cell.reciprocal;
    z = TwoPart{product.high - 1, product.low} + TwoPart{low, 0};
  }
  const TwoPart small = ordered_sum(cell.middle, cell.low) + log1p_series(z) * power_table.log2_e;
  return TwoPart{reduction.exponent + (long double)cell.high, 0} + small;
}

// ---- Angle in right angles

// A point other than 0 as its image in the first octant, and where that one's angle goes: turned
// and shifted.
struct Image {
  long double large, small;
  struct Turn {
    float turn, shift;
  } const& to;
};

static inline Image image_of(const Lux64fc& z) {
  // y positive, y negative; x positive, x negative; |y| <= |x|, |y| > |x|
  static const Image::Turn kTurns[2][2][2] = {
      {{{1, 0.0f}, {-1, 1}}, {{-1, 2}, {1, 1}}},
      {{{-1, -0.0f}, {1, -1}}, {{1, -2}, {-1, -1}}},
  };
  const long double x = __builtin_fabsl(z.re), y = __builtin_fabsl(z.im);
  const bool steep = y > x;
  return {__builtin_fabsl(*(steep ? &z.im : &z.re)), __builtin_fabsl(*(steep ? &z.re : &z.im)),
          kTurns[upper_word(&z.im) >> 31][upper_word(&z.re) >> 31][steep]};
}

// Of a point other than 0, to 2^-62 of the angle.
static inline long double angle_short(const Lux64fc& z) {
  const auto& [large, small, to] = image_of(z);
  const int32_t i = rounded(small / large * 64);
  const long double slope = i * (1 / 64.0L);
  const long double s = (small - slope * large) / (large + slope * small), square = s * s;
  const auto& base = power_table.slope[i];
  const long double tail =
      polynomial(power_table.a, 4, square) * square + power_table.a0_low + power_table.a0_high;
  return (tail * s + base.middle) * to.turn + (base.high * to.turn + to.shift);
}

// To 2^-115 of the angle.
static TwoPart angle_long(const Lux64fc& z) {
  const auto& [large, small, to] = image_of(z);
  const int32_t i = rounded(small / large * 64);
  const long double slope = i * (1 / 64.0L);
  const TwoPart s = TwoPart{small - slope * large, 0} / exact_sum(large, slope * small),
                square = s * s;

  // s - s^3/3 + s^5/5 - ... to s^17, |s| < 0.0079: the terms from s^9 on with 64 bits.
  long double rest = 1.0L / 17;
  for (int k = 15; k >= 9; k -= 2) rest = rest * square.high + (k % 4 == 1 ? 1.0L : -1.0L) / k;
  TwoPart sum = square * rest;
  for (int k = 7; k >= 1; k -= 2) {
    const TwoPart& inverse = power_table.inverse[k];
    sum = (k % 4 == 1 ? inverse : -inverse) + sum;
    sum = sum * (k == 1 ? s : square);
  }
  const auto& base = power_table.slope[i];
  const TwoPart angle =
      TwoPart{base.high, 0} + (ordered_sum(base.middle, base.low) + sum * power_table.radian);
  return TwoPart{to.shift, 0} + TwoPart{angle.high * to.turn, angle.low * to.turn};
}

// ---- The way back

struct ScaledPower {
  long double value;
  int32_t exponent;  // of the factor 2^exponent that is left
};

// 2^(k/128 + r), |r| <= 2^-8: value to 0.51 units of the last place.
static inline ScaledPower exp2_near(int32_t k, long double r) {
  const DoublePair& entry = power_table.power[k & 127];
  const long double rising =
      (polynomial(power_table.e, 5, r) * r + power_table.e0_low + power_table.e0_high) * r;
  return {entry.high + (entry.low + whole(entry) * rising), k >> 7};
}

// 2^t, |t| < 2^24.
static inline ScaledPower exp2_parts(long double t) {
  const int32_t k = rounded(t * 128);
  return exp2_near(k, t - k * (1 / 128.0L));
}
static inline ScaledPower exp2_parts(const TwoPart& t) {
  const int32_t k = rounded(t.high * 128);
  return exp2_near(k, (t.high - k * (1 / 128.0L)) + t.low);
}

struct Point {
  long double cosine, sine;
};

// Of j/32 + d right angles, |d| <= 1/64. Exact on the axes, whose zeros are positive when d is.
static inline Point circle_near(int32_t j, long double d) {
  const long double square = d * d;
  const long double sine = whole(power_table.sine[j & 127]);
  const long double cosine = whole(power_table.sine[(j + 32) & 127]);
  const long double small_sine =
      (polynomial(power_table.s, 4, square) * square + power_table.s0_low + power_table.s0_high) *
      d;
  const long double less = polynomial(power_table.k, 5, square) * square;  // cosine of d, less 1
  return {cosine + (cosine * less - sine * small_sine), sine + (sine * less + cosine * small_sine)};
}

// Of a right angles, |a| < 2^24.
static inline Point circle_point(long double a) {
  const int32_t j = rounded(a * 32);
  return circle_near(j, a - j * (1 / 32.0L));
}
static inline Point circle_point(const TwoPart& a) {
  const int32_t j = rounded(a.high * 32);
  return circle_near(j, (a.high - j * (1 / 32.0L)) + a.low);
}

#endif
