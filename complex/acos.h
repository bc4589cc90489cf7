// SPDX-License-Identifier: MIT
//
// Complex arc cosine: with the u and v of (|re|, |im|), acos z = u' - iv, u' the angle whose cosine
// has the sign of re, v in the sign of im.
//
// Worst error found (sampled), also of acosh: 0.5009 ulp at (0x1p+0, -0x1.30675e2cd15c5p-11).
#ifndef LUX_COMPLEX_ACOS_H
#define LUX_COMPLEX_ACOS_H

#include "complex/arc.h"

// Infinities, NaNs and +-1.
__attribute__((noinline, cold)) static Complex64 complex_acos_rare(const Complex64& z) {
  const bool wide = _nox_internal_isinf(z.re), high = _nox_internal_isinf(z.im);
  if (_nox_internal_isnan(z.re) || _nox_internal_isnan(z.im)) {
    if (wide) return {z.im + z.im, __builtin_inf()};
    if (high) return {z.re + z.re, -z.im};
    if (_nox_internal_iszero(z.re)) return {0x1.921fb54442d18p+0, z.im + z.im};
    return {z.re + z.im, z.re + z.im};
  }
  const long double angle = atan2_upper(high, high && !wide ? 0 : sign_of(z.re));
  return {double(angle), wide || high ? -__builtin_inf() * sign_of(z.im) : -z.im};
}

static inline Complex64 complex_acos(const Complex64& z) {
  if (__builtin_expect(!has_arc(z.re, z.im), false)) return complex_acos_rare(z);
  const long double re = load_extended(&z.re), im = load_extended(&z.im);
  const Arc found = arc(__builtin_fabsl(re), __builtin_fabsl(im));
  const long double u = atan2_upper(found.cosine, found.sine * sign_of(z.re));
  return {store_f64(double(u)), store_f64(double(-found.v * sign_of(z.im)))};
}

#endif
