// SPDX-License-Identifier: MIT
//
// Four packed singles: loads and stores of any byte address, constants, selection, signs,
// significands. Arithmetic is written with the operators of the vector type.
#ifndef LUX_KERNELS_LANES_H
#define LUX_KERNELS_LANES_H

#include <xmmintrin.h>

#include "core/bits.h"

// Where lanes pass through memory, and constants with lanes of their own.
struct alignas(16) Lanes {
  float lane[4];
};

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
static inline __m128 load_all_lanes(const float* from) {
  const __m128 lane = load_lane(from);
  return _mm_shuffle_ps(lane, lane, 0);
}

static inline __m128 lanes_of(const BitLanes& constant) {
  return _mm_load_ps(reinterpret_cast<const float*>(&constant));
}

// A number or a pattern in all lanes. No pattern of a signalling NaN, which would not survive an
// unoptimised build.
static inline __m128 all_lanes(float number) { return _mm_set1_ps(number); }
static inline __m128 all_lanes(uint32_t pattern) {
  return _mm_set1_ps(__builtin_bit_cast(float, pattern));
}

static inline bool in_all_lanes(__m128 condition) { return _mm_movemask_ps(condition) == 15; }
static inline bool in_any_lane(__m128 condition) { return _mm_movemask_ps(condition) != 0; }

// `yes` where the mask is set.
static inline __m128 select(__m128 mask, __m128 yes, __m128 no) {
  return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
}

static inline __m128 sign_of(__m128 x) { return _mm_and_ps(x, all_lanes(Format<float>::kSign)); }
static inline __m128 magnitude_of(__m128 x) {
  return _mm_andnot_ps(all_lanes(Format<float>::kSign), x);
}

// In [1, 2).
static inline __m128 significand_of(__m128 x) {
  return _mm_or_ps(_mm_and_ps(x, all_lanes(Format<float>::kFraction)), all_lanes(1.0f));
}

// The leading 12 bits of the significand, whose square is exact.
static inline __m128 leading_half(__m128 x) { return _mm_and_ps(x, all_lanes(0xFFFFF000)); }

// Horner's scheme. The coefficients, highest power first, are a template's argument, so that they
// are known.
template <const auto& kC>
static inline __m128 polynomial(__m128 x) {
  __m128 sum = all_lanes(kC[0]);
#pragma GCC unroll 8
  for (size_t k = 1; k < sizeof kC / sizeof kC[0]; ++k) sum = sum * x + kC[k];
  return sum;
}

// An element alone stands in all lanes.
template <int kCount>
static inline __m128 load_elements(const float* from) {
  return kCount == 4 ? load_lanes(from) : load_all_lanes(from);
}

template <int kCount>
static inline void store_elements(float* to, __m128 lanes) {
  if (kCount == 4)
    store_lanes(to, lanes);
  else
    store_lane(to, lanes);
}

// ---- Doubles, and pairs of singles, in halves of four lanes

static inline __m128 load_pair(const double* from) {
  return load_lanes(reinterpret_cast<const float*>(from));
}

// To an address that is a multiple of 16.
static inline void store_pair(double* to, __m128 pair) {
  _mm_store_ps(reinterpret_cast<float*>(to), pair);
}

// One half, beside zeros.
static inline __m128 load_half(const void* from) {
  return _mm_loadl_pi(_mm_setzero_ps(), static_cast<const __m64*>(from));
}

static inline void store_half(void* to, __m128 half) {
  _mm_storel_pi(static_cast<__m64*>(to), half);
}

static inline __m128 load_halves(const void* low, const void* high) {
  return _mm_loadh_pi(load_half(low), static_cast<const __m64*>(high));
}

// Four pairs of singles, one for each lane, turned.
struct PairLanes {
  __m128 first, second;
};

static inline PairLanes turned(const float* a, const float* b, const float* c, const float* d) {
  const __m128 low = load_halves(a, b), high = load_halves(c, d);
  return {_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)),
          _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}

// ---- MMX

// Leaves the MMX state occupied.
static inline __m128 from_integers(const int32_t* four) {
  const __m64* const pairs = reinterpret_cast<const __m64*>(four);
  const __m128 low = _mm_cvtpi32_ps(_mm_setzero_ps(), pairs[0]);
  return _mm_movelh_ps(low, _mm_cvtpi32_ps(_mm_setzero_ps(), pairs[1]));
}

#endif
