// SPDX-License-Identifier: MIT
//
// The odd polynomial that the single-precision sine and cosine share, |r| <= pi/2.
#ifndef LUX_KERNELS_TRIG_SINE_POLYNOMIAL_32F_H
#define LUX_KERNELS_TRIG_SINE_POLYNOMIAL_32F_H

// r2 = r^2. V is double, or four packed singles with coefficients rounded to C = float.
template <class C, class V>
static inline V sine_polynomial(V r, V r2) {
  return r * (C(0x1.000000089705fp+0) +
              r2 * (C(-0x1.55554ae8ba1bdp-3) +
                    r2 * (C(0x1.110ee64cd0933p-7) +
                          r2 * (C(-0x1.9f75e2c166f94p-13) + r2 * C(0x1.5e0a329a17541p-19)))));
}

#endif
