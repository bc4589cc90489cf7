// SPDX-License-Identifier: MIT
//
// Arctangent of double-precision arrays; the method is in kernels/trig/arctangent_64f.h.
// Worst error found 0.5003 ulp, at 0x3FF4188E6D0770A1 (sampled against 140 bits).
#include "kernels/trig/arctangent_64f.h"

static inline void element(const double* x, double* y) {
  const uint32_t sign = upper_word(x) & kSignUpper;
  const Cell& c = cell_of(upper_magnitude(x));
  const long double rest = turned(c, magnitude_of(x), 1);
  *y = double(rest + c.angle[0].low + c.angle[0].high);
  set_upper_bits(y, sign);
}

static Status atan_64f(const double* src, double* dst, int32_t len) {
  return run_kernel<X87Nearest<X87_EXTENDED>, 2>(
      Arrays<double>{src, src, dst, dst}, len,
      [=](int32_t i, int32_t last) {
        for (; i < last; i += 2) {
          const uint32_t a = upper_magnitude(src + i) - kInfUpper,
                         b = upper_magnitude(src + i + 1) - kInfUpper;
          if (int32_t(a & b) >= 0) break;
          element(src + i, dst + i);
          element(src + i + 1, dst + i + 1);
        }
        return i;
      },
      [=](int32_t i, Status*) {
        constexpr uint64_t kHalfPi = 0x3FF921FB54442D18;  // 1.5707963267948966
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (a < Format<double>::kInf)
          element(src + i, dst + i);
        else
          store_bits(dst + i, a > Format<double>::kInf ? quieted<double>(x) : kHalfPi | (x ^ a));
      });
}

LUX_KERNELS_64F(Atan, 1_1, atan_64f)
