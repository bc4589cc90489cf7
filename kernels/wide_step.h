// SPDX-License-Identifier: MIT
//
// What the steps of the wide library share: how one is declared, the screening of eight singles, and
// the walk over blocks. Each ends with its upper halves cleared, as every function does that the compiler
// makes for AVX.
#ifndef LUX_KERNELS_WIDE_STEP_H
#define LUX_KERNELS_WIDE_STEP_H

#include "core/wide.h"
#include "kernels/lanes.h"

#ifndef LUX_WIDE
#error "the wide library's, which is compiled for AVX2"
#endif

#define LUX_WIDE_EXACT(family, type)                                                      \
  int32_t wide_##family##_##type(const Arrays<LUX_ELEMENT_##type>& arrays, int32_t first, \
                                 int32_t last, [[maybe_unused]] uint32_t* x87_flags)
#define LUX_WIDE_KERNEL(family, type, grade) LUX_WIDE_EXACT(family, type##_##grade)
#define LUX_ELEMENT_32f_A24 float
#define LUX_ELEMENT_32f_A21 float
#define LUX_ELEMENT_32f_A11 float
#define LUX_ELEMENT_64f_A53 double

static inline bool in_all_lanes(__m256i condition) {
  return in_all_lanes(_mm256_castsi256_ps(condition));
}

static inline __m256i patterns_of(Singles x) { return _mm256_castps_si256(x); }

// All magnitudes below the number with this pattern.
static inline bool all_below(Singles x, uint32_t bound) {
  return in_all_lanes(
      _mm256_cmpgt_epi32(_mm256_set1_epi32(int32_t(bound)), patterns_of(magnitude_of(x))));
}

// All patterns in low <= x < high, those of positive numbers.
static inline bool all_within(Singles x, uint32_t low, uint32_t high) {
  const __m256i pattern = patterns_of(x);
  return in_all_lanes(_mm256_cmpgt_epi32(pattern, _mm256_set1_epi32(int32_t(low) - 1)) &
                      _mm256_cmpgt_epi32(_mm256_set1_epi32(int32_t(high)), pattern));
}

// Zeros are none.
static inline bool none_subnormal(Singles x) {
  const __m256i a = patterns_of(magnitude_of(x)), zero = _mm256_setzero_si256();
  const __m256i normal =
      _mm256_cmpgt_epi32(a, _mm256_set1_epi32(Format<float>::kSmallestNormal - 1));
  return in_all_lanes(normal | _mm256_cmpeq_epi32(a, zero));
}

// Whole blocks, from `first` on, that ordinary(x) finds ordinary: block(x, y) computes one.
template <class E, class Ordinary, class Block>
static inline int32_t wide_blocks(const Arrays<E>& arrays, int32_t i, int32_t last,
                                  Ordinary ordinary, Block block) {
  for (; i + kLanes <= last && ordinary(load_lanes(arrays.src1 + i)); i += kLanes)
    block(arrays.src1 + i, arrays.dst1 + i);
  return i;
}

// The same of two sources; compute(x, y) is the result.
template <class Ordinary, class Compute>
static inline int32_t wide_pairs(const Arrays<float>& arrays, int32_t i, int32_t last,
                                 Ordinary ordinary, Compute compute) {
  for (; i + kLanes <= last; i += kLanes) {
    const Singles x = load_lanes(arrays.src1 + i), y = load_lanes(arrays.src2 + i);
    if (!ordinary(x, y)) break;
    store_lanes(arrays.dst1 + i, compute(x, y));
  }
  return i;
}

template <class Block>
static inline int32_t wide_blocks_below(const Arrays<float>& arrays, uint32_t bound, int32_t i,
                                        int32_t last, Block block) {
  return wide_blocks(
      arrays, i, last, [=](Singles x) { return all_below(x, bound); }, block);
}

#endif
