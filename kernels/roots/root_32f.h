// SPDX-License-Identifier: MIT
//
// What the packed square root and reciprocal square root share: the processor's estimate of
// 1/sqrt(x) cut to nine bits, so that its square is exact, and the series that corrects it.
#ifndef LUX_KERNELS_ROOTS_ROOT_32F_H
#define LUX_KERNELS_ROOTS_ROOT_32F_H

#include "kernels/frame.h"
#include "kernels/lanes.h"
#include "kernels/screens.h"

static inline __m128 nine_bits(__m128 x) { return _mm_and_ps(x, all_lanes(0xFFFF8000)); }

// ((1 + e)^(-1/2) - 1) / e to third order.
static inline __m128 root_series(__m128 e) {
  const __m128 inner = -0.3125f * e + 0.375f;
  return inner * e - 0.5f;
}

// Whether all of sixteen numbers lie in low <= x < high, powers of two. Compares powers of two,
// zeros and infinities only: no special element raises a flag. The numbers are loaded for this
// alone, by a pointer that the compiler takes for another: kept for the roots they would be
// spilled.
static inline bool all_within(const float* sixteen, uint32_t low, uint32_t high) {
  asm("" : "+r"(sixteen));
  const __m128 mask = all_lanes(~Format<float>::kFraction);
  const __m128 a = _mm_and_ps(load_lanes(sixteen), mask);
  const __m128 b = _mm_and_ps(load_lanes(sixteen + 4), mask);
  const __m128 c = _mm_and_ps(load_lanes(sixteen + 8), mask);
  const __m128 d = _mm_and_ps(load_lanes(sixteen + 12), mask);
  const __m128 least = _mm_min_ps(_mm_min_ps(a, b), _mm_min_ps(c, d));
  const __m128 most = _mm_max_ps(_mm_max_ps(a, b), _mm_max_ps(c, d));
  return in_all_lanes(
      _mm_and_ps(_mm_cmple_ps(all_lanes(low), least), _mm_cmplt_ps(most, all_lanes(high))));
}

#endif
