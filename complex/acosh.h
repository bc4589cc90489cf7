// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic cosine: with the u' and v of the arc cosine, acosh z = v + iu', u' in
// the sign of im.
#ifndef LUX_COMPLEX_ACOSH_H
#define LUX_COMPLEX_ACOSH_H

#include "complex/acos.h"

static inline Complex64 complex_acosh(const Complex64& z) {
  if (__builtin_expect(!has_arc(z.re, z.im), false)) {
    const Complex64 angle = complex_acos_rare(z);
    return {__builtin_fabs(angle.im), angle.re * sign_of(z.im)};
  }
  const long double re = load_extended(&z.re), im = load_extended(&z.im);
  const Arc found = arc(__builtin_fabsl(re), __builtin_fabsl(im));
  const long double u = atan2_upper(found.cosine, found.sine * sign_of(z.re));
  return {store_f64(double(found.v)), store_f64(double(u * sign_of(z.im)))};
}

#endif
