// SPDX-License-Identifier: MIT
//
// Arccosine of double-precision arrays: (pi/2 - A_k) - asin v for positive numbers,
// (pi/2 + A_k) + asin v for negative ones; the method is in kernels/trig/arcsine_64f.h.
// Worst error found 0.5006 ulp, at 0x3FEFB47AFBC27E70 (sampled against 140 bits).
#include "kernels/trig/arcsine_64f.h"

static const float kSide[2] = {-1, 1};

static inline void put_arccosine(const double* x, double* y, long double rest, uint32_t k) {
  const uint32_t negative = upper_word(x) >> 31;
  const Pair& c = kComplement[negative][k];
  in_memory(y) = double(rest * kSide[negative] + c.low + c.high);
}

static Status acos_64f(const double* src, double* dst, int32_t len) {
  return arcsine(src, dst, len, [](const double* x, double* y, long double rest, uint32_t k) {
    put_arccosine(x, y, rest, k);
  });
}

LUX_KERNELS_64F(Acos, 1_1, acos_64f)
