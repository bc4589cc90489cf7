// SPDX-License-Identifier: MIT
//
// The angle of a complex number, and the point of the unit circle at an angle.
//
//   angle of (x, y), y <= x, = angle(i/64) + angle(s),  i = round(64 y/x),
//                              s = (y - x i/64) / (x + y i/64), whose numerator is exact
//   sine and cosine of an angle a = j/32 + d by the addition theorems
//
// Angles are counted in right angles, so that those of the axes and of the diagonals, and their
// products by doubles, are exact.
#ifndef LUX_COMPLEX_POLAR_H
#define LUX_COMPLEX_POLAR_H

#include "extended/power.h"

// A point other than 0 as its image in the first octant, and where that one's angle goes: turned
// and shifted.
struct Image {
  long double large, small;
  struct Turn {
    float turn, shift;
  } const& to;
};

static inline Image image_of(const Complex64& z) {
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

// The step is the integer nearest to this.
static inline long double image_step(const Image& image) { return image.small / image.large * 64; }

static inline long double angle_near(const Image& image, int32_t i) {
  const PowerTable& table = anew(power_table);
  const auto& [large, small, to] = image;
  const long double slope = i * (1 / 64.0L);
  const long double s = (small - slope * large) / (large + slope * small), square = s * s;
  const auto& base = table.slope[i];
  const long double tail = polynomial(table.a, square) * square + table.a0_low + table.a0_high;
  return (tail * s + base.middle) * to.turn + (base.high * to.turn + to.shift);
}

// Of a point other than 0, to 2^-62 of the angle.
static inline long double angle_short(const Complex64& z) {
  const Image image = image_of(z);
  return angle_near(image, nearest_integer(image_step(image)));
}

struct Point {
  long double cosine, sine;
};

// Of j/32 + d right angles, |d| <= 1/64. Exact on the axes, whose zeros are positive when d is.
static inline Point circle_near(int32_t j, long double d) {
  const PowerTable& table = anew(power_table);
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
  const int32_t j = nearest_integer(a * 32);
  return circle_near(j, a - j * (1 / 32.0L));
}

#endif
