// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic tangent. For x, y >= 0
//
//   atanh(x + iy) = log(1 + 4x / ((1-x)^2 + y^2)) / 4 + i/2 angle of ((1-x)(1+x) - y^2, 2y),
//
// odd in each part. In extended precision nothing leaves the format. The sum of squares does not
// cancel. The abscissa of the angle may, but where it does it is small beside 2y: its error, 2^-64
// of y^2 or of |1-x^2|, moves the angle by at most 2^-62 of itself everywhere.
//
// Worst error found (sampled), also of atan: 0.5010 ulp, from the sums and quotients before the
// last rounding.
#ifndef LUX_COMPLEX_ATANH_H
#define LUX_COMPLEX_ATANH_H

#include "complex/number.h"
#include "extended/angle.h"
#include "extended/logarithm.h"

// Infinities, NaNs and poles.
__attribute__((noinline, cold)) static Complex64 complex_atanh_special(const Complex64& z) {
  const double quarter = __builtin_copysign(0x1.921fb54442d18p+0, z.im);  // pi/2
  const double zero = __builtin_copysign(0.0, z.re);
  if (_nox_internal_isinf(z.im)) return {zero, quarter};
  if (_nox_internal_isinf(z.re)) return {zero, _nox_internal_isnan(z.im) ? z.im + z.im : quarter};
  if (_nox_internal_isnan(z.re)) return {z.re + z.im, z.re + z.im};
  if (_nox_internal_isnan(z.im))
    return {_nox_internal_iszero(z.re) ? z.re : z.im + z.im, z.im + z.im};
  return {store_f64(z.re / __builtin_fabsl(z.im)), z.im};  // a pole
}

// What is neither infinite nor NaN nor a pole. atan takes the parts exchanged: each sign
// that the turn changes is changed back.
struct AtanhParts {
  long double size, turn;
};

__attribute__((always_inline)) static inline bool atanh_parts(const double* re, const double* im,
                                                              AtanhParts* parts) {
  static const float quarters[2] = {0.25f, -0.25f}, halves[2] = {0.5f, -0.5f};
  const uint32_t upper_re = upper_word(re), upper_im = upper_word(im);
  const uint32_t a = upper_re & ~kSignUpper, b = upper_im & ~kSignUpper;
  if (__builtin_expect((a > b ? a : b) >= 0x7FF00000, false)) return false;
  const long double x = __builtin_fabsl(load_extended(re)), y = __builtin_fabsl(load_extended(im));
  const long double left = 1.0f - x, norm = left * left + y * y;
  if (__builtin_expect(norm == 0, false)) return false;
  parts->size = log1p_core(4.0f * x / norm) * quarters[upper_re >> 31];
  parts->turn = atan2_upper(2.0f * y, left * (1.0f + x) - y * y) * halves[upper_im >> 31];
  return true;
}

__attribute__((always_inline)) static inline Complex64 complex_atanh(const Complex64& z) {
  AtanhParts parts;
  if (!atanh_parts(&z.re, &z.im, &parts)) return complex_atanh_special(z);
  return rounded(parts.size, parts.turn);
}

#endif
