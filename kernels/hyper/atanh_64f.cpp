// SPDX-License-Identifier: MIT
//
// Inverse hyperbolic tangent of double-precision arrays: the sign of x with half of ln(1 + s),
// s = 2 |x| / (1 - |x|); the logarithm is in kernels/hyper/log1p_64f.h. For small arguments s is
// 2 |x| and the result |x|; subnormals pass as they are.
//
// Worst error found 0.5006 ulp, at 0xBFB544A0FB6DCA6F (sampled).
#include "kernels/hyper/log1p_64f.h"

struct Atanh {
  static constexpr uint32_t kBeyond = Upper<double>::kOne, kSigned = kSignUpper;
  static constexpr float kScale = 0.5f;

  static long double argument(const double* x) {
    const long double a = magnitude_of(x);
    return (a + a) / (1.0f - a);
  }

  static void special(const Arrays<double>& arrays, int32_t i, Status* status) {
    const uint64_t x = load_bits(arrays.src1 + i), a = magnitude<double>(x);
    double* const y = arrays.dst1 + i;
    if (a > Format<double>::kInf || a < Format<double>::kSmallestNormal) {
      store_bits(y, quieted<double>(x));
    } else if (a == Format<double>::kOne) {
      store_bits(y, Format<double>::kInf | (x ^ a));
      _ErrorCall(arrays, LUX_POLE, i, status);
    } else {
      store_bits(y, Format<double>::kDefaultNaN);
      _ErrorCall(arrays, LUX_DOMAIN, i, status);
    }
  }
};

static Status atanh_64f(const double* src, double* dst, int32_t len) {
  return log1p_64f<Atanh>(src, dst, len);
}

LUX_KERNELS_64F(Atanh, 1_1, atanh_64f)
