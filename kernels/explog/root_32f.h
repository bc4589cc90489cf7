// SPDX-License-Identifier: MIT
//
// What the packed square root and reciprocal square root share: the processor's estimate of
// 1/sqrt(x) cut to nine bits, so that its square is exact, and the series that corrects it.
#ifndef LUX_KERNELS_EXPLOG_ROOT_32F_H
#define LUX_KERNELS_EXPLOG_ROOT_32F_H

#include "kernels/arith/frame.h"
#include "kernels/arith/lanes.h"

constexpr uint32_t kSmallestNormal = 0x00800000;  // 2^-126

static const BitLanes kNineBits = {{0xFFFF8000, 0xFFFF8000, 0xFFFF8000, 0xFFFF8000}};

static inline __m128 nine_bits(__m128 x) { return _mm_and_ps(x, lanes_of(kNineBits)); }

// ((1 + e)^(-1/2) - 1) / e to third order.
static inline __m128 series(__m128 e) {
  const __m128 inner = _mm_add_ps(_mm_mul_ps(_mm_set1_ps(-0.3125f), e), _mm_set1_ps(0.375f));
  return _mm_sub_ps(_mm_mul_ps(inner, e), _mm_set1_ps(0.5f));
}

static inline bool is_positive_normal(uint32_t x) {
  return x - kSmallestNormal < Format<float>::kInf - kSmallestNormal;
}

#endif
