// SPDX-License-Identifier: MIT
//
// Arcsine of double-precision arrays; the method is in kernels/trig/arcsine_64f.h.
// Worst error found 0.5008 ulp, at 0x3FCE21C674E6D0A0 (sampled against 140 bits).
#include "kernels/trig/arcsine_64f.h"

static inline void put_arcsine(const double* x, double* y, long double rest, uint32_t k) {
  const uint32_t sign = upper_word(x) & kSignUpper;
  in_memory(y) = double(rest + kRotation[k].angle[1] + kRotation[k].angle[0]);
  set_upper_bits(y, sign);
}

static Status asin_64f(const double* src, double* dst, int32_t len) {
  return arcsine(src, dst, len, [](const double* x, double* y, long double rest, uint32_t k) {
    put_arcsine(x, y, rest, k);
  });
}

LUX_KERNELS_64F(Asin, 1_1, asin_64f)
