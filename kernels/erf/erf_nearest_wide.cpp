// SPDX-License-Identifier: MIT
//
// Error function of single-precision arrays, by the cubics of kernels/erf/erf_32f.cpp, off by
// 2^-38.3 at most; the steps add less than 2^-50.
#include "kernels/erf/erf_32f_step.h"  // kCubic, kSaturated
#include "kernels/wide_nearest.h"

constexpr uint32_t kMargin = 0x7000;  // 2^-38.2

static inline __m256d product(const FourRows& c, __m256d a) {
  const __m256d quadratic = _mm256_fmadd_pd(_mm256_fmadd_pd(c.first, a, c.second), a, c.third);
  return _mm256_fmadd_pd(quadratic, a, c.fourth) * a;
}

static inline Doubles error_function(Singles x) {
  const Singles a = smaller(magnitude_of(x), all_lanes(kSaturated));
  const __m256i cell =
      _mm256_sub_epi32(patterns_of(shifted_to_grid<128>(a)), _mm256_set1_epi32(Grid<128>::kBits));
  static_assert(sizeof kCubic[0] == 1 << 5);
  const Indices offset(_mm256_slli_epi32(cell, 5));
  const Doubles wide = as_doubles(a);
  return {product(look_up_rows(kCubic, offset.lane), wide.low),
          product(look_up_rows(kCubic, offset.lane + 4), wide.high)};
}

LUX_WIDE_KERNEL(Erf, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, Format<float>::kInf>,
                                 error_function, with_sign);
}
