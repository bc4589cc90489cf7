// SPDX-License-Identifier: MIT
//
// Inverse hyperbolic cosine of double-precision arrays: ln(1 + s), s = d + sqrt(d (x + 1)) with the
// exact d = x - 1; the logarithm is in kernels/hyper/log1p_64f.h. From 2^62 on ln(2 x).
//
// Worst error found 0.5007 ulp, at 0x3FF643D7A315EE20 (sampled against 140 bits).
#include "kernels/hyper/log1p_64f.h"

struct Acosh {
  static constexpr uint32_t kFirst = Upper<double>::kOne, kBeyond = kLargeUpper, kSigned = 0;
  static constexpr float kScale = 1;

  static long double argument(const double* x) {
    const long double d = load_extended(x) - 1.0f;
    return __builtin_sqrtl((load_extended(x) + 1.0f) * d) + d;
  }

  static void special(const Arrays<double>& arrays, int32_t i, Status* status) {
    const uint64_t x = load_bits(arrays.src1 + i);
    double* const y = arrays.dst1 + i;
    if (magnitude<double>(x) > Format<double>::kInf) {
      store_bits(y, quieted<double>(x));
    } else if (x & Format<double>::kSign || x < Format<double>::kOne) {
      store_bits(y, Format<double>::kDefaultNaN);
      _ErrorCall(arrays, LUX_DOMAIN, i, status);
    } else if (x == Format<double>::kInf) {
      store_bits(y, x);
    } else {
      put(y, log_twice(x));
    }
  }
};

static Status acosh_64f(const double* src, double* dst, int32_t len) {
  return log1p_64f<Acosh>(src, dst, len);
}

LUX_KERNELS_64F(Acosh, 1_1, acosh_64f)
