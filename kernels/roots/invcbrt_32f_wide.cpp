// SPDX-License-Identifier: MIT
#include "kernels/roots/invcbrt_32f_step.h"
#include "kernels/wide_step.h"

// Of normal numbers; the first estimate as the kernel has it.
template <bool kRefined>
static inline int32_t inverse_cube_roots(const Arrays<float>& arrays, int32_t first, int32_t last) {
  return wide_blocks(
      arrays, first, last,
      [](Singles x) {
        return all_within(magnitude_of(x), Format<float>::kSmallestNormal, Format<float>::kInf);
      },
      [](const float* src, float* dst) {
        const Singles x = load_lanes(src);
        const __m256i third =
            _mm256_mulhi_epu16(patterns_of(magnitude_of(x)), _mm256_set1_epi16(int16_t(kThirds)));
        const __m256i start = _mm256_sub_epi32(_mm256_set1_epi32(int32_t(kStart)), third);
        store_lanes(dst, corrected<kRefined>(x, either(_mm256_castsi256_ps(start), sign_of(x))));
      });
}

LUX_WIDE_KERNEL(InvCbrt, 32f, A21) { return inverse_cube_roots<true>(arrays, first, last); }
LUX_WIDE_KERNEL(InvCbrt, 32f, A11) { return inverse_cube_roots<false>(arrays, first, last); }
