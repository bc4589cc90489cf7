// SPDX-License-Identifier: MIT
//
// The steps of a power with 64 bits: logarithm and angle, and the way back by 2^t and the point of
// the unit circle. power_long.h has the logarithm with about 120 bits.
//
//   log2 x = e + log2(1/R) + log2(1 + z),  x = 2^e m, i = round(256 (m - 1)), z = m R[i] - 1
//   angle of (x, y), y <= x, = angle(i/64) + angle(s),  i = round(64 y/x),
//                              s = (y - x i/64) / (x + y i/64), whose numerator is exact
//   2^t = 2^n T[j] 2^r,  t = n + j/256 + r
//   sine and cosine of an angle a = j/32 + d by the addition theorems
//
// Angles are counted in right angles, so that those of the axes and of the diagonals, and their
// products by doubles, are exact. R[0] = 1 and R[256] = 1/2, so that nothing cancels next to 1.
#ifndef LUX_EXTENDED_POWER_H
#define LUX_EXTENDED_POWER_H

#include "core/bits.h"
#include "luxvmk3.h"
#include "extended/generated/exp_table.h"  // _nox_exp_table.power, of 2
#include "extended/generated/power_table.h"

struct ExtendedWords {
  uint32_t lower, upper;
  uint16_t exponent;  // and sign
} __attribute__((may_alias));

// The table by a pointer that the compiler takes for a new one, lest it make extended constants of
// pairs or keep numbers in extended form from one element to the next: their loads cost more than
// those of the doubles.
static inline const PowerTable& power_table_anew() {
  const PowerTable* table = &power_table;
  asm volatile("" : "+r"(table));
  return *table;
}

static inline long double whole(const DoublePair& pair) {
  return pair.high + (long double)pair.low;
}

// To the nearest integer.
static inline int32_t rounded(long double x) {
  int32_t nearest;
  asm("fistl %0" : "=m"(nearest) : "t"(x));
  return nearest;
}

// ---- Logarithm to base 2

// x = 2^exponent m of a positive normal number, with the cell of m.
struct Cell {
  int32_t exponent;
  uint32_t index;
};

// Gives m. The processor forwards significand and exponent apart from each other, so m can be
// loaded from the significand that was stored and a new exponent.
static inline long double reduced(long double x, Cell* cell) {
  ExtendedWords words;
  asm("fstpt %0" : "=m"(words) : "t"(x) : "st");
  cell->exponent = words.exponent - 16383;
  cell->index = ((words.upper & 0x7FFFFFFF) + 0x400000) >> 23;
  words.exponent = 16383;
  long double m;
  asm("fldt %1" : "=t"(m) : "m"(words));
  return m;
}

template <int kCount>
static inline long double polynomial(const double (&c)[kCount], long double x) {
  long double value = c[0];
#pragma GCC unroll 8
  for (int i = 1; i < kCount; ++i) value = value * x + c[i];
  return value;
}

// To 2^-63 of 1 or of the logarithm, whichever is larger.
static inline long double log2_short(long double m, Cell place) {
  const PowerTable& table = power_table_anew();
  const auto& cell = table.cell[place.index];
  const long double z = m * cell.reciprocal - 1.0f;
  const long double tail = polynomial(table.c, z) * z + table.c0_low;
  return (tail + table.c0_high) * z + cell.middle + (place.exponent + (long double)cell.high);
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
  const double* const parts = &z.re;
  const bool steep = magnitude<double>(load_bits(&z.im)) > magnitude<double>(load_bits(&z.re));
  return {__builtin_fabsl(load_extended(parts + steep)),
          __builtin_fabsl(load_extended(parts + 1 - steep)),
          kTurns[upper_word(&z.im) >> 31][upper_word(&z.re) >> 31][steep]};
}

// Of a point other than 0, to 2^-62 of the angle.
static inline long double angle_short(const Lux64fc& z) {
  const PowerTable& table = power_table_anew();
  const auto& [large, small, to] = image_of(z);
  const int32_t i = rounded(small / large * 64);
  const long double slope = i * (1 / 64.0L);
  const long double s = (small - slope * large) / (large + slope * small), square = s * s;
  const auto& base = table.slope[i];
  const long double tail = polynomial(table.a, square) * square + table.a0_low + table.a0_high;
  return (tail * s + base.middle) * to.turn + (base.high * to.turn + to.shift);
}

// ---- The way back

struct ScaledPower {
  long double value;
  int32_t exponent;  // of the factor 2^exponent that is left
};

// 2^(k/256 + r), |r| <= 2^-9: value to 0.51 units of the last place.
static inline ScaledPower exp2_near(int32_t k, long double r) {
  const PowerTable& table = power_table_anew();
  const double* const power = _nox_exp_table.power[k & 255];
  const long double rising = (polynomial(table.e, r) * r + table.e0_low + table.e0_high) * r;
  return {power[0] + (power[1] + ((long double)power[1] + power[0]) * rising), k >> 8};
}

// 2^t, |t| < 2^24.
static inline ScaledPower exp2_parts(long double t) {
  const int32_t k = rounded(t * 256);
  return exp2_near(k, t - k * (1 / 256.0L));
}

struct Point {
  long double cosine, sine;
};

// Of j/32 + d right angles, |d| <= 1/64. Exact on the axes, whose zeros are positive when d is.
static inline Point circle_near(int32_t j, long double d) {
  const PowerTable& table = power_table_anew();
  const long double square = d * d;
  const long double sine = whole(table.sine[j & 127]);
  const long double cosine = whole(table.sine[(j + 32) & 127]);
  const long double small_sine =
      (polynomial(table.s, square) * square + table.s0_low + table.s0_high) * d;
  const long double less = polynomial(table.k, square) * square;  // cosine of d, less 1
  return {cosine + (cosine * less - sine * small_sine), sine + (sine * less + cosine * small_sine)};
}

// Of a right angles, |a| < 2^24.
static inline Point circle_point(long double a) {
  const int32_t j = rounded(a * 32);
  return circle_near(j, a - j * (1 / 32.0L));
}

#endif
