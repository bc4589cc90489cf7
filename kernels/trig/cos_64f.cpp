// SPDX-License-Identifier: MIT
//
// Cosine of double-precision arrays: kernels/trig/sine_64f.h.
#include "kernels/trig/sine_64f.h"

static Status cos_64f(const double* src, double* dst, int32_t len) {
  return sine_or_cosine<true>(src, dst, len, noxdCos_SC_HA);
}

LUX_KERNELS_64F(Cos, 1_1, cos_64f)
