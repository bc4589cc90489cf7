// SPDX-License-Identifier: MIT
//
// Angles in extended precision, for the complex functions and the scalar routines.
//
// The point (d, n), 0 <= n <= d, is turned back by the angle of (64, j), j the integer nearest
// 64 n / d:
//
//   r = (n - d j/64) / (d + n j/64), |r| < 2^-6.99, angle = atan(j/64) + atan(r),
//
// atan(r) by an odd polynomial. The other octants take pi/2 - angle, pi - angle and pi/2 + angle; a
// table gives the first term of each as a double and the rest. Small angles come out with full
// relative accuracy, since j = 0 turns nothing.
//
// atan2_core and atan2_upper: relative error at most 1.5 * 2^-63 (sampled). They want 64-bit
// precision and rounding to nearest.
#ifndef LUX_EXTENDED_ANGLE_H
#define LUX_EXTENDED_ANGLE_H

#include "extended/generated/atan_table.h"  // kAtan
#include "extended/number.h"

// What the angle of (d, n) becomes: with n and d exchanged, of a point with negative abscissa.
enum Octant { kExchanged = 1, kNegative = 2 };

static const float kTurn[4] = {1, -1, -1, 1};  // sign of atan(r) by octant

// 0 <= n <= d (1 + 2^-20), d > 0, in steps; j is the integer nearest it.
static inline long double angle_step(long double n, long double d) { return n / d * 64.0f; }

__attribute__((always_inline)) static inline long double angle_near(int octant, int32_t j,
                                                                    long double n, long double d) {
  const ExtendedAngles& table = anew(kAtan);
  const float tangent = table.tangent[j];
  const Angle& turned = table.angle[octant][j];
  const long double r = (n - d * tangent) / (d + n * tangent) * kTurn[octant], w = r * r;
  const double* const s = table.quick;
  return turned.high + (turned.low + (r + r * w * (s[0] + w * (s[1] + w * s[2]))));
}

__attribute__((always_inline)) static inline long double angle(int octant, long double n,
                                                               long double d) {
  return angle_near(octant, nearest_integer(angle_step(n, d)), n, d);
}

// The angle of (x, y), y >= 0, x of either sign, not both zero, in [0, pi].
static inline long double atan2_upper(long double y, long double x) {
  const long double a = __builtin_fabsl(x);
  const bool exchanged = y > a;
  return angle(exchanged * kExchanged + (x < 0) * kNegative, exchanged ? a : y, exchanged ? y : a);
}

// The same for x >= 0, in [0, pi/2].
static inline long double atan2_core(long double y, long double x) {
  const bool exchanged = y > x;
  return angle(exchanged * kExchanged, exchanged ? x : y, exchanged ? y : x);
}

#endif
