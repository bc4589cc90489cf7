// SPDX-License-Identifier: MIT
//
// Complementary error function of single-precision arrays: erfc a = e^(-a^2) Q(t) / (a + 3), t = (a
// - 3) / (a + 3), erfc -a = 2 - erfc a. Q is off by 2^-39.1 at most, the exponential by 2^-39.7,
// all steps together by less than 2^-46.
#include "kernels/erf/generated/wide_erfc_32f_table.h"  // kWideErfc
#include "kernels/wide_powers.h"

constexpr uint32_t kMargin = 1 << 15;        // 2^-38
constexpr uint32_t kUnderflow = 0x41131CE0;  // 9.194550: results are subnormal from there on

static inline Doubles complement(Singles x) {
  const Doubles a = as_doubles(smaller(magnitude_of(x), all_lanes(9.19455f)));
  const Doubles w = all_doubles(1) / (a + 3);
  const Doubles power = exp2(split(a * a, -kLog2E));
  const Doubles y =
      power * split_polynomial<kWideErfc>(fused(w, all_doubles(-6), all_doubles(1))) * w;
  const DoubleMask negative = is_less(as_doubles(x), all_doubles(0));
  return select(negative, all_doubles(2) - y, y);
}

LUX_WIDE_KERNEL(Erfc, 32f, A24) {
  return nearest_blocks<kMargin>(
      arrays, first, last,
      [](Singles x) {
        return all_within<Format<float>::kSmallestNormal, Format<float>::kInf>(x) &&
               in_all_lanes(
                   _mm256_cmpgt_epi32(_mm256_set1_epi32(int32_t(kUnderflow)), patterns_of(x)));
      },
      complement, as_it_is);
}
