// SPDX-License-Identifier: MIT
//
// The odd polynomial that the single-precision sine and cosine share, |r| <= pi/2.
#ifndef LUX_KERNELS_TRIG_SINE_POLYNOMIAL_32F_H
#define LUX_KERNELS_TRIG_SINE_POLYNOMIAL_32F_H

#include "kernels/trig/generated/trig_32f_table.h"  // kSine

// r2 = r^2. V is double or several, or packed singles with coefficients rounded to C = float.
template <class C, class V>
static inline V sine_polynomial(V r, V r2) {
  return r * (C(kSine[0]) +
              r2 * (C(kSine[1]) + r2 * (C(kSine[2]) + r2 * (C(kSine[3]) + r2 * C(kSine[4])))));
}

#endif
