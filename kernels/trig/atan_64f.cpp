// SPDX-License-Identifier: MIT
//
// Arctangent of double-precision arrays; the method is in kernels/trig/arctangent_64f.h.
// Worst error found 0.5003 ulp, at 0x3FF4188E6D0770A1 (sampled against 140 bits).
#include "kernels/trig/arctangent_64f.h"
#include "kernels/saturating_64f.h"

static inline void element(const double* x, double* y) {
  const uint32_t sign = upper_word(x) & kSignUpper;
  const Cell& c = cell_of(upper_magnitude(x));
  const long double rest = turned(c, magnitude_of(x), 1);
  in_memory(y) = double(rest + c.angle[0].low + c.angle[0].high);
  set_upper_bits(y, sign);
}

static Status atan_64f(const double* src, double* dst, int32_t len) {
  constexpr uint64_t kHalfPi = 0x3FF921FB54442D18;  // 1.5707963267948966
  return saturating_64f<2>(src, dst, len, Upper<double>::kInf, kHalfPi,
                           [](const double* x, double* y) { element(x, y); });
}

LUX_KERNELS_64F(Atan, 1_1, atan_64f)
