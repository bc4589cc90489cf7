// SPDX-License-Identifier: MIT
#include "kernels/trig/arctangent_32f_step.h"
#include "kernels/wide_step.h"

#define ARCTANGENT(grade, polynomial)                                                     \
  LUX_WIDE_KERNEL(Atan, 32f, grade) {                                                     \
    return wide_blocks_below(arrays, kNaNs, first, last, atan_block<polynomial, kLanes>); \
  }
ARCTANGENT(A21, kAtan21)
ARCTANGENT(A11, kAtan11)

// All magnitudes, less their fractions, between the two, which are excluded: patterns of powers of two.
static inline bool all_between(__m256i a, __m256i b, float low, float high) {
  const __m256i least = patterns_of(all_lanes(low)), most = patterns_of(all_lanes(high));
  return in_all_lanes(_mm256_cmpgt_epi32(a, least) & _mm256_cmpgt_epi32(b, least) &
                      _mm256_cmpgt_epi32(most, a) & _mm256_cmpgt_epi32(most, b));
}

template <const auto& kP>
static inline int32_t angles(const Arrays<float>& arrays, int32_t i, int32_t last) {
  const auto exponents = [](const float* x) {
    return patterns_of(load_lanes(x)) & _mm256_set1_epi32(Format<float>::kInf);
  };
  for (; i + kLanes <= last; i += kLanes) {
    const float *const y = arrays.src1 + i, *const x = arrays.src2 + i;
    const __m256i a = exponents(y), b = exponents(x);
    if (all_between(a, b, kModerateLow, kModerateHigh))
      angle_block<kP, kLanes, true>(y, x, arrays.dst1 + i);
    else if (all_between(a, b, 0, __builtin_inff()))
      angle_block<kP, kLanes, false>(y, x, arrays.dst1 + i);
    else
      break;
  }
  return i;
}

LUX_WIDE_KERNEL(Atan2, 32f, A21) { return angles<kAtan21>(arrays, first, last); }
LUX_WIDE_KERNEL(Atan2, 32f, A11) { return angles<kAtan11>(arrays, first, last); }
