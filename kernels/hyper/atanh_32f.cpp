// SPDX-License-Identifier: MIT
//
// Inverse hyperbolic tangent of single-precision arrays: the sign of x with half of ln(1 + s),
// s = 2 |x| / (1 - |x|); the logarithm is in kernels/hyper/log1p_32f.h. Subnormals pass
// as they are.
//
// Worst errors (every positive input): A24 0.5000 ulp, at 0x3A71E7A1; A21 2^-22.12 of the result,
// at 0x3BAE2B40; A11 2^-13.46, at 0x3E2FB18E.
#include "kernels/hyper/log1p_32f.h"

LUX_DOUBLE_KERNEL(Atanh);
static constexpr Listed kListed[] = {{}};

struct Atanh : PackedAtanh {
  using PackedAtanh::argument;
  static constexpr auto* kAccurate = by_double<_noxomp_luxsAtanh_64f_A53, kListed>;
  static constexpr auto kWideStep = &WideLibrary::Atanh_32f_A24;

  static long double argument(long double a) { return (a + a) / (1.0f - a); }

  static void special(const Arrays<float>& arrays, int32_t i, Status* status) {
    const uint32_t x = load_bits(arrays.src1 + i), a = magnitude<float>(x);
    float* const y = arrays.dst1 + i;
    if (a > Format<float>::kInf || a < Format<float>::kSmallestNormal) {
      store_bits(y, quieted<float>(x));
    } else if (a == Format<float>::kOne) {
      store_bits(y, Format<float>::kInf | (x ^ a));
      _ErrorCall(arrays, LUX_POLE, i, status);
    } else {
      store_bits(y, Format<float>::kDefaultNaN);
      _ErrorCall(arrays, LUX_DOMAIN, i, status);
    }
  }
};

LOG1P_KERNELS_32F(Atanh)
