// SPDX-License-Identifier: MIT
//
// What the packed square root and reciprocal square root share: the processor's estimate of
// 1/sqrt(x) cut to nine bits, so that its square is exact, and the series that corrects it.
#ifndef LUX_KERNELS_ROOTS_ROOT_32F_H
#define LUX_KERNELS_ROOTS_ROOT_32F_H

#include "kernels/frame.h"
#include "kernels/lanes.h"

constexpr uint32_t kSmallestNormal = 0x00800000;  // 2^-126

static const BitLanes kNineBits = {{0xFFFF8000, 0xFFFF8000, 0xFFFF8000, 0xFFFF8000}};

static inline __m128 nine_bits(__m128 x) { return _mm_and_ps(x, lanes_of(kNineBits)); }

// ((1 + e)^(-1/2) - 1) / e to third order.
static inline __m128 series(__m128 e) {
  const __m128 inner = _mm_add_ps(_mm_mul_ps(_mm_set1_ps(-0.3125f), e), _mm_set1_ps(0.375f));
  return _mm_sub_ps(_mm_mul_ps(inner, e), _mm_set1_ps(0.5f));
}

// Whether all of sixteen numbers lie in low <= x < high, powers of two. Compares powers of two,
// zeros and infinities only: no special element raises a flag. The numbers are loaded for this
// alone, by a pointer that the compiler takes for another: kept for the roots they would be
// spilled.
static inline bool all_within(const float* sixteen, const BitLanes& low, const BitLanes& high) {
  static const BitLanes sign_and_exponent = {{0xFF800000, 0xFF800000, 0xFF800000, 0xFF800000}};
  asm("" : "+r"(sixteen));
  const __m128 mask = lanes_of(sign_and_exponent);
  const __m128 a = _mm_and_ps(load_lanes(sixteen), mask);
  const __m128 b = _mm_and_ps(load_lanes(sixteen + 4), mask);
  const __m128 c = _mm_and_ps(load_lanes(sixteen + 8), mask);
  const __m128 d = _mm_and_ps(load_lanes(sixteen + 12), mask);
  const __m128 least = _mm_min_ps(_mm_min_ps(a, b), _mm_min_ps(c, d));
  const __m128 most = _mm_max_ps(_mm_max_ps(a, b), _mm_max_ps(c, d));
  return in_all_lanes(
      _mm_and_ps(_mm_cmple_ps(lanes_of(low), least), _mm_cmplt_ps(most, lanes_of(high))));
}

static inline bool is_positive_normal(uint32_t x) {
  return x - kSmallestNormal < Format<float>::kInf - kSmallestNormal;
}

#endif
