// SPDX-License-Identifier: MIT
//
// What the packed square root and reciprocal square root share beside their steps: the screening.
#ifndef LUX_KERNELS_ROOTS_ROOT_32F_H
#define LUX_KERNELS_ROOTS_ROOT_32F_H

#include "kernels/frame.h"
#include "kernels/roots/root_32f_step.h"
#include "kernels/screens.h"

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
