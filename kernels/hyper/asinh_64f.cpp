// SPDX-License-Identifier: MIT
//
// Inverse hyperbolic sine of double-precision arrays: the sign of x with ln(1 + s),
// s = |x| + x^2 / (1 + sqrt(x^2 + 1)); the logarithm is in kernels/hyper/log1p_64f.h. From 2^62 on
// ln(2 |x|). For small arguments s is |x| and so is the result; subnormals pass as they are.
//
// Worst error found 0.5007 ulp, at 0xBFE91656FE343025 (sampled).
#include "kernels/hyper/log1p_64f.h"

struct Asinh {
  static constexpr uint32_t kBeyond = kLargeUpper, kSigned = kSignUpper;
  static constexpr float kScale = 1;

  static long double argument(const double* x) {
    const long double a = magnitude_of(x), square = a * a;
    return square / (__builtin_sqrtl(square + 1.0f) + 1.0f) + a;
  }

  static void special(const Arrays<double>& arrays, int32_t i, Status*) {
    const uint64_t x = load_bits(arrays.src1 + i), a = magnitude<double>(x);
    double* const y = arrays.dst1 + i;
    if (a >= Format<double>::kInf || a < Format<double>::kSmallestNormal) {
      store_bits(y, quieted<double>(x));
    } else {
      put(y, log_twice(a));
      set_upper_bits(y, uint32_t((x ^ a) >> 32));
    }
  }
};

static Status asinh_64f(const double* src, double* dst, int32_t len) {
  return log1p_64f<Asinh>(src, dst, len);
}

LUX_KERNELS_64F(Asinh, 1_1, asinh_64f)
