// SPDX-License-Identifier: MIT
//
// Singles singles: loads and stores of any byte address, constants, comparison, selection, signs,
// significands. Arithmetic is written with the operators of the vector type.
//
// Steps that are compiled for the wide library too have four lanes in one and eight in the other: they
// are written in the words over `Singles`.
#ifndef LUX_KERNELS_LANES_H
#define LUX_KERNELS_LANES_H

#ifdef LUX_WIDE
#include <immintrin.h>
#else
#include <xmmintrin.h>
#endif

#include "core/bits.h"

#ifdef LUX_WIDE
typedef __m256 Singles;
#define LUX_PACKED(operation) _mm256_##operation
#define LUX_COMPARED(a, b, relation, name) _mm256_cmp_ps(a, b, relation)
#else
typedef __m128 Singles;
#define LUX_PACKED(operation) _mm_##operation
#define LUX_COMPARED(a, b, relation, name) _mm_cmp##name##_ps(a, b)
#endif

constexpr int kLanes = sizeof(Singles) / sizeof(float);

// Where lanes pass through memory, and constants with lanes of their own.
struct alignas(16) Lanes {
  float lane[4];
};

struct alignas(16) BitLanes {
  uint32_t lane[4];
};

typedef __m128 __attribute__((may_alias, aligned(1))) UnalignedLanes;
typedef float __attribute__((may_alias, aligned(1))) UnalignedLane;

// One instruction each; for the main library's processor class the intrinsics give two halves.
#ifdef LUX_WIDE
static inline Singles load_lanes(const float* from) { return _mm256_loadu_ps(from); }
static inline void store_lanes(float* to, Singles lanes) { _mm256_storeu_ps(to, lanes); }
#else
static inline __m128 load_lanes(const float* from) {
  __m128 lanes;
  asm("movups %1, %0" : "=x"(lanes) : "m"(*reinterpret_cast<const UnalignedLanes*>(from)));
  return lanes;
}

static inline void store_lanes(float* to, __m128 lanes) {
  asm("movups %1, %0" : "=m"(*reinterpret_cast<UnalignedLanes*>(to)) : "x"(lanes));
}
#endif

// A number or a pattern in all lanes. No pattern of a signalling NaN, which would not survive an
// unoptimised build.
static inline Singles all_lanes(float number) { return LUX_PACKED(set1_ps)(number); }
static inline Singles all_lanes(uint32_t pattern) {
  return LUX_PACKED(set1_ps)(__builtin_bit_cast(float, pattern));
}

static inline bool in_all_lanes(Singles condition) {
  return LUX_PACKED(movemask_ps)(condition) == (1 << kLanes) - 1;
}
static inline bool in_any_lane(Singles condition) {
  return LUX_PACKED(movemask_ps)(condition) != 0;
}

// By bits.
static inline Singles both(Singles a, Singles b) { return LUX_PACKED(and_ps)(a, b); }
static inline Singles either(Singles a, Singles b) { return LUX_PACKED(or_ps)(a, b); }
static inline Singles differing(Singles a, Singles b) { return LUX_PACKED(xor_ps)(a, b); }
static inline Singles without(Singles mask, Singles a) { return LUX_PACKED(andnot_ps)(mask, a); }

// Masks of all bits of a lane. The first two raise invalid for any NaN.
static inline Singles is_less(Singles a, Singles b) { return LUX_COMPARED(a, b, _CMP_LT_OS, lt); }
static inline Singles is_at_most(Singles a, Singles b) {
  return LUX_COMPARED(a, b, _CMP_LE_OS, le);
}
static inline Singles is_equal(Singles a, Singles b) { return LUX_COMPARED(a, b, _CMP_EQ_OQ, eq); }
static inline Singles is_unequal(Singles a, Singles b) {
  return LUX_COMPARED(a, b, _CMP_NEQ_UQ, neq);
}

// The second where they are equal, or one is a NaN.
static inline Singles smaller(Singles a, Singles b) { return LUX_PACKED(min_ps)(a, b); }
static inline Singles larger(Singles a, Singles b) { return LUX_PACKED(max_ps)(a, b); }

static inline Singles square_root(Singles x) { return LUX_PACKED(sqrt_ps)(x); }
static inline Singles inverse_root_estimate(Singles x) { return LUX_PACKED(rsqrt_ps)(x); }

// `yes` where the mask is set.
static inline Singles select(Singles mask, Singles yes, Singles no) {
  return either(both(mask, yes), without(mask, no));
}

static inline Singles sign_of(Singles x) { return both(x, all_lanes(Format<float>::kSign)); }
static inline Singles magnitude_of(Singles x) {
  return without(all_lanes(Format<float>::kSign), x);
}

// In [1, 2).
static inline Singles significand_of(Singles x) {
  return either(both(x, all_lanes(Format<float>::kFraction)), all_lanes(1.0f));
}

// The leading 12 bits of the significand, whose square is exact.
static inline Singles leading_half(Singles x) { return both(x, all_lanes(0xFFFFF000)); }

// Horner's scheme. The coefficients, highest power first, are a template's argument, so that they
// are known.
template <const auto& kC>
static inline Singles polynomial(Singles x) {
  Singles sum = all_lanes(kC[0]);
#pragma GCC unroll 8
  for (size_t k = 1; k < sizeof kC / sizeof kC[0]; ++k) sum = sum * x + kC[k];
  return sum;
}

// To an address that is a multiple of their size, where each lane is then looked at.
static inline void lay_out(float* to, Singles lanes) { LUX_PACKED(store_ps)(to, lanes); }

struct PairLanes {
  Singles first, second;
};

struct FourLanes {
  Singles first, second, third, fourth;
};

#ifdef LUX_WIDE

// The patterns as integers, rounded to singles.
static inline Singles pattern_numbers(Singles x) {
  return _mm256_cvtepi32_ps(_mm256_castps_si256(x));
}

// Numbers rounded to integers, as patterns.
static inline Singles numbers_as_patterns(Singles x) {
  return _mm256_castsi256_ps(_mm256_cvtps_epi32(x));
}

// The wide library computes no element alone.
template <int kCount>
static inline Singles load_elements(const float* from) {
  static_assert(kCount == kLanes);
  return load_lanes(from);
}

template <int kCount>
static inline void store_elements(float* to, Singles lanes) {
  static_assert(kCount == kLanes);
  store_lanes(to, lanes);
}

static inline __m256 load_quarters(const float* a, const float* b, const float* c, const float* d) {
  const auto half = [](const float* low, const float* high) {
    const __m128 none = _mm_setzero_ps();
    return _mm_loadh_pi(_mm_loadl_pi(none, reinterpret_cast<const __m64*>(low)),
                        reinterpret_cast<const __m64*>(high));
  };
  return _mm256_set_m128(half(c, d), half(a, b));
}

// Pairs of singles, pair(lane) one for each lane, turned.
template <class Pair>
static inline PairLanes turned_pairs(Pair pair) {
  const Singles low = load_quarters(pair(0), pair(1), pair(4), pair(5)),
                high = load_quarters(pair(2), pair(3), pair(6), pair(7));
  return {_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)),
          _mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}

// Rows of four singles, row(lane) one for each lane, at multiples of 16, turned.
template <class Row>
static inline FourLanes turned_rows(Row row) {
  const auto both_of = [&](int lane) {
    return _mm256_set_m128(_mm_load_ps(row(lane + 4)), _mm_load_ps(row(lane)));
  };
  const Singles a = both_of(0), b = both_of(1), c = both_of(2), d = both_of(3);
  const Singles ab = _mm256_unpacklo_ps(a, b), cd = _mm256_unpacklo_ps(c, d);
  const Singles ab2 = _mm256_unpackhi_ps(a, b), cd2 = _mm256_unpackhi_ps(c, d);
  return {_mm256_shuffle_ps(ab, cd, _MM_SHUFFLE(1, 0, 1, 0)),
          _mm256_shuffle_ps(ab, cd, _MM_SHUFFLE(3, 2, 3, 2)),
          _mm256_shuffle_ps(ab2, cd2, _MM_SHUFFLE(1, 0, 1, 0)),
          _mm256_shuffle_ps(ab2, cd2, _MM_SHUFFLE(3, 2, 3, 2))};
}

#else

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

static inline PairLanes turned(const float* a, const float* b, const float* c, const float* d) {
  const __m128 low = load_halves(a, b), high = load_halves(c, d);
  return {_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)),
          _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}

// Four pairs of singles, pair(lane) one for each lane, turned.
template <class Pair>
static inline PairLanes turned_pairs(Pair pair) {
  return turned(pair(0), pair(1), pair(2), pair(3));
}

// Four rows of four singles, row(lane) one for each lane, at multiples of 16, turned.
template <class Row>
static inline FourLanes turned_rows(Row row) {
  __m128 a = _mm_load_ps(row(0)), b = _mm_load_ps(row(1));
  __m128 c = _mm_load_ps(row(2)), d = _mm_load_ps(row(3));
  _MM_TRANSPOSE4_PS(a, b, c, d);
  return {a, b, c, d};
}

// ---- MMX

// Leaves the MMX state occupied.
static inline __m128 from_integers(const int32_t* four) {
  const __m64* const pairs = reinterpret_cast<const __m64*>(four);
  const __m128 low = _mm_cvtpi32_ps(_mm_setzero_ps(), pairs[0]);
  return _mm_movelh_ps(low, _mm_cvtpi32_ps(_mm_setzero_ps(), pairs[1]));
}

// Numbers rounded to integers, as patterns. Leaves the MMX state occupied.
static inline __m128 numbers_as_patterns(__m128 x) {
  __m64 pairs[2] = {_mm_cvtps_pi32(x), _mm_cvtps_pi32(_mm_movehl_ps(x, x))};
  asm("" : "+m"(pairs));
  return load_halves(pairs, pairs + 1);
}

// The patterns as integers, rounded to singles. Leaves the MMX state occupied.
static inline __m128 pattern_numbers(__m128 x) {
  alignas(16) int32_t patterns[4];
  _mm_store_ps(reinterpret_cast<float*>(patterns), x);
  return from_integers(patterns);
}

#endif

#endif
