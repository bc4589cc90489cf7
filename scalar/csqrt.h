// SPDX-License-Identifier: MIT
//
// Principal complex square root.
//
//   m = sqrt(re^2 + im^2),  u = sqrt((m + |re|) / 2),  root = u + i im / (2u), or im / (2u) + i u
//
// in extended precision: nothing cancels, and squares of doubles stay inside the format. Zeros,
// infinities and NaNs are settled here.
#ifndef LUX_SCALAR_CSQRT_H
#define LUX_SCALAR_CSQRT_H

#include "scalar/internal.h"

__attribute__((noinline, cold)) static Lux64fc complex_sqrt_special(Lux64fc z) {
  const double infinity = __builtin_inf();
  if (_nox_internal_isinf(z.im)) return {infinity, z.im};
  if (_nox_internal_isnan(z.re)) return {z.re + z.im, z.re + z.im};
  if (_nox_internal_ispinf(z.re)) return {z.re, _nox_internal_isnan(z.im) ? z.im : z.im * 0};
  if (_nox_internal_isninf(z.re))
    return {_nox_internal_isnan(z.im) ? z.im : 0, __builtin_copysign(infinity, z.im)};
  if (_nox_internal_isnan(z.im)) return {z.im + z.im, z.im + z.im};
  return {0, z.im};  // a zero
}

static inline Lux64fc complex_sqrt(Lux64fc z) {
  const uint32_t re = upper_word(&z.re) & 0x7FFFFFFF, im = upper_word(&z.im) & 0x7FFFFFFF;
  if (__builtin_expect(re >= 0x7FF00000 || im >= 0x7FF00000, false)) return complex_sqrt_special(z);
  if (_nox_internal_iszero(z.re) && _nox_internal_iszero(z.im)) return complex_sqrt_special(z);
  return _nox_internal_csqrt(z.re, z.im);
}

#endif
