// SPDX-License-Identifier: MIT
//
// What the inverse trigonometric functions of double-precision arrays share, on the x87 unit at
// 64-bit precision.
#ifndef LUX_KERNELS_TRIG_ODD_SERIES_H
#define LUX_KERNELS_TRIG_ODD_SERIES_H

#include "kernels/frame.h"

// v + s0 v^7 + s1 v^5 + s2 v^3; v^3 by itself, which is ready sooner.
static inline long double odd_series(const double (&s)[3], long double v) {
  const long double w = v * v;
  return v + ((s[0] * w + s[1]) * w + s[2]) * (w * v);
}

#endif
