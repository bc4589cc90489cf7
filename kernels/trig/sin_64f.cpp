// SPDX-License-Identifier: MIT
//
// Sine of double-precision arrays: kernels/trig/sine_64f.h.
#include "kernels/trig/sine_64f.h"

static Status sin_64f(const double* src, double* dst, int32_t len) {
  return sine_or_cosine<false>(src, dst, len, noxdSin_SC_HA);
}

LUX_KERNELS_64F(Sin, 1_1, sin_64f)
