// SPDX-License-Identifier: MIT
//
// Cube root of double-precision arrays; the method is in kernels/roots/cbrt_64f.h.
// Worst error found 0.5011 ulp, at 0x3FF73FF4A034A663 (sampled against 160 bits).
#include "kernels/roots/cbrt_64f.h"

static Status cbrt(const double* src, double* dst, int32_t len) {
  return cbrt_64f<false>({src, src, dst, dst}, len, [=](int32_t i, uint64_t x, Status*) {
    store_bits(dst + i, quieted<double>(x));
  });
}

LUX_KERNELS_64F(Cbrt, 1_1, cbrt)
