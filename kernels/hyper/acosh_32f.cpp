// SPDX-License-Identifier: MIT
//
// Inverse hyperbolic cosine of single-precision arrays: ln(1 + s), s = d + sqrt(d (x + 1)) with the
// exact d = x - 1; the logarithm is in kernels/hyper/log1p_32f.h. From 2^62 on ln(2 x) in every
// grade.
//
// Worst errors (every input): A24 0.5000 ulp, at 0x655890D3; A21 2^-21.97 of the result, at
// 0x3F811651; A11 2^-13.46, at 0x3F87C3CB.
#include "kernels/hyper/log1p_32f.h"

LUX_DOUBLE_KERNEL(Acosh);
static constexpr Listed kListed[] = {{0x655890D3, 0x4254D1F9}, {0x6EB1A8EC, 0x42845A89}, {}};

struct Acosh : PackedAcosh {
  using PackedAcosh::argument;
  static constexpr auto* kAccurate = by_double<_noxomp_luxsAcosh_64f_A53, kListed>;
  static constexpr auto kWideStep = &WideLibrary::Acosh_32f_A24;

  static long double argument(long double x) {
    const long double d = x - one_in_memory();
    return __builtin_sqrtl((x + one_in_memory()) * d) + d;
  }

  static void special(const Arrays<float>& arrays, int32_t i, Status* status) {
    const uint32_t x = load_bits(arrays.src1 + i);
    float* const y = arrays.dst1 + i;
    if (magnitude<float>(x) > Format<float>::kInf) {
      store_bits(y, quieted<float>(x));
    } else if (x & kSignUpper || x < Format<float>::kOne) {
      store_bits(y, Format<float>::kDefaultNaN);
      _ErrorCall(arrays, LUX_DOMAIN, i, status);
    } else if (x == Format<float>::kInf) {
      store_bits(y, x);
    } else {
      in_memory(y) = log_twice<kAccurate>(x);
    }
  }
};

LOG1P_KERNELS_32F(Acosh)
