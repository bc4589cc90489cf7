// SPDX-License-Identifier: MIT
//
// Inverse hyperbolic sine of single-precision arrays: the sign of x with ln(1 + s),
// s = |x| + (sqrt(x^2 + 1) - 1), packed |x| + x^2 / (1 + sqrt(x^2 + 1)); the logarithm is in
// kernels/hyper/log1p_32f.h. From 2^62 on ln(2 |x|) in every grade.
//
// The root is off by 2^-64, which is 2^-51 of |x| at 2^-13. Below, the result is |x| but for 2^-28 of
// it, and far from the middle of two singles: the root's part, up to 2^-32 at 2^-32, does not count.
// Below 2^-32 s is |x|, and half of its square, which ln(1 + s) takes off, is less than that.
// Subnormals pass as they are.
//
// Worst errors (every positive input): A24 0.5000 ulp, at 0x655890D3; A21 2^-22.04 of the result,
// at 0x3C836017; A11 2^-13.46, at 0x3EB50636.
#include "kernels/hyper/log1p_32f.h"

LUX_DOUBLE_KERNEL(Asinh);
static constexpr Listed kListed[] = {{0x4BDD65A5, 0x418F034B},
                                     {0xCBDD65A5, 0xC18F034B},
                                     {0x655890D3, 0x4254D1F9},  // of log_twice, magnitudes
                                     {0x6EB1A8EC, 0x42845A89},
                                     {}};

struct Asinh : PackedAsinh {
  using PackedAsinh::argument;
  static constexpr auto* kAccurate = by_double<_noxomp_luxsAsinh_64f_A53, kListed>;
  static constexpr auto kWideStep = &WideLibrary::Asinh_32f_A24;

  static long double argument(long double a) {
    return __builtin_sqrtl(a * a + one_in_memory()) - one_in_memory() + a;
  }

  static void special(const Arrays<float>& arrays, int32_t i, Status*) {
    const uint32_t x = load_bits(arrays.src1 + i), a = magnitude<float>(x);
    float* const y = arrays.dst1 + i;
    if (a >= Format<float>::kInf || a < Format<float>::kSmallestNormal) {
      store_bits(y, quieted<float>(x));
    } else {
      in_memory(y) = log_twice<kAccurate>(a);
      set_upper_bits(y, x ^ a);
    }
  }
};

LOG1P_KERNELS_32F(Asinh)
