// SPDX-License-Identifier: MIT
//
// What the packed square root and reciprocal square root share: the processor's estimate of
// 1/sqrt(x) cut to nine bits, so that its square is exact, and the series that corrects it.
#ifndef LUX_KERNELS_EXPLOG_ROOT_32F_H
#define LUX_KERNELS_EXPLOG_ROOT_32F_H

#include <xmmintrin.h>

#include "kernels/arith/frame.h"

constexpr uint32_t kSmallestNormal = 0x00800000;  // 2^-126

struct alignas(16) BitLanes {
  uint32_t lane[4];
};
static const BitLanes kNineBits = {{0xFFFF8000, 0xFFFF8000, 0xFFFF8000, 0xFFFF8000}};

typedef __m128 __attribute__((may_alias, aligned(1))) UnalignedLanes;

// One instruction each; for this processor class the intrinsics give two halves.
static inline __m128 load_lanes(const float* from) {
  __m128 lanes;
  asm("movups %1, %0" : "=x"(lanes) : "m"(*reinterpret_cast<const UnalignedLanes*>(from)));
  return lanes;
}

static inline void store_lanes(float* to, __m128 lanes) {
  asm("movups %1, %0" : "=m"(*reinterpret_cast<UnalignedLanes*>(to)) : "x"(lanes));
}

static inline __m128 lanes_of(const BitLanes& constant) {
  return _mm_load_ps(reinterpret_cast<const float*>(&constant));
}

static inline __m128 nine_bits(__m128 x) { return _mm_and_ps(x, lanes_of(kNineBits)); }

// ((1 + e)^(-1/2) - 1) / e to third order.
static inline __m128 series(__m128 e) {
  const __m128 inner = _mm_add_ps(_mm_mul_ps(_mm_set1_ps(-0.3125f), e), _mm_set1_ps(0.375f));
  return _mm_sub_ps(_mm_mul_ps(inner, e), _mm_set1_ps(0.5f));
}

static inline bool in_all_lanes(__m128 condition) { return _mm_movemask_ps(condition) == 15; }

static inline bool is_positive_normal(uint32_t x) {
  return x - kSmallestNormal < Format<float>::kInf - kSmallestNormal;
}

#endif
