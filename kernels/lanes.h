// SPDX-License-Identifier: MIT
//
// Four packed singles: loads and stores of any byte address, bit patterns, selection, signs.
#ifndef LUX_KERNELS_LANES_H
#define LUX_KERNELS_LANES_H

#include <xmmintrin.h>

#include "core/bits.h"

struct alignas(16) BitLanes {
  uint32_t lane[4];
};

typedef __m128 __attribute__((may_alias, aligned(1))) UnalignedLanes;
typedef float __attribute__((may_alias, aligned(1))) UnalignedLane;

// One instruction each; for this processor class the intrinsics give two halves.
static inline __m128 load_lanes(const float* from) {
  __m128 lanes;
  asm("movups %1, %0" : "=x"(lanes) : "m"(*reinterpret_cast<const UnalignedLanes*>(from)));
  return lanes;
}

static inline void store_lanes(float* to, __m128 lanes) {
  asm("movups %1, %0" : "=m"(*reinterpret_cast<UnalignedLanes*>(to)) : "x"(lanes));
}

// One element, in the first lane beside zeros.
static inline __m128 load_lane(const float* from) {
  __m128 lane;
  asm("movss %1, %0" : "=x"(lane) : "m"(*reinterpret_cast<const UnalignedLane*>(from)));
  return lane;
}

static inline void store_lane(float* to, __m128 lane) {
  asm("movss %1, %0" : "=m"(*reinterpret_cast<UnalignedLane*>(to)) : "x"(lane));
}

// One element in all lanes.
static inline __m128 load_everywhere(const float* from) {
  const __m128 lane = load_lane(from);
  return _mm_shuffle_ps(lane, lane, 0);
}

static inline __m128 lanes_of(const BitLanes& constant) {
  return _mm_load_ps(reinterpret_cast<const float*>(&constant));
}

static inline bool in_all_lanes(__m128 condition) { return _mm_movemask_ps(condition) == 15; }

// `yes` where the mask is set.
static inline __m128 select(__m128 mask, __m128 yes, __m128 no) {
  return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
}

static const BitLanes kSignLanes = {{0x80000000, 0x80000000, 0x80000000, 0x80000000}};

static inline __m128 sign_of(__m128 x) { return _mm_and_ps(x, lanes_of(kSignLanes)); }
static inline __m128 magnitude_of(__m128 x) { return _mm_andnot_ps(lanes_of(kSignLanes), x); }

// An element alone stands in all lanes.
template <int kCount>
static inline __m128 load_elements(const float* from) {
  return kCount == 4 ? load_lanes(from) : load_everywhere(from);
}

template <int kCount>
static inline void store_elements(float* to, __m128 lanes) {
  if (kCount == 4)
    store_lanes(to, lanes);
  else
    store_lane(to, lanes);
}

// All four magnitudes below the bound, as patterns.
static inline bool all_below(const float* x, uint32_t bound) {
  uint32_t below = ~0u;
  for (int lane = 0; lane < 4; ++lane) below &= magnitude<float>(load_bits(x + lane)) - bound;
  return int32_t(below) < 0;
}

// Leaves the MMX state occupied.
static inline __m128 from_integers(const int32_t* four) {
  const __m64* const pairs = reinterpret_cast<const __m64*>(four);
  const __m128 low = _mm_cvtpi32_ps(_mm_setzero_ps(), pairs[0]);
  return _mm_movelh_ps(low, _mm_cvtpi32_ps(_mm_setzero_ps(), pairs[1]));
}

#endif
