// SPDX-License-Identifier: MIT
//
// Wide steps of kernels whose results are the nearest singles: a method of its own gives each
// result as a double, and where its error cannot change which single is the nearest, that single is
// the kernel's.
//
// A result that is off by less than kMargin of its last places, of which a double has at most 2^53
// (a relative error e takes a margin of 2^53 e), is decided where its lower 29 bits, which a single
// does not have, are further than the margin from 2^28. The step stops at a block that has another
// one, a share of kMargin 2^-28 of the elements, and leaves that to the kernel. Subnormal results
// are rounded at a higher place, and are not decided so.
//
// No operation on an ordinary element may raise more than the flag of an inexact result, which is
// raised before (core/wide_walk.h).
#ifndef LUX_KERNELS_WIDE_NEAREST_H
#define LUX_KERNELS_WIDE_NEAREST_H

#include "kernels/wide_doubles.h"

template <uint32_t kMargin>
static inline bool all_decided(Doubles y) {
  static_assert(kMargin < 1u << 27);
  constexpr int kAbove = 32 - 29;  // the 29 bits fill the word
  const __m256i words = patterns_of(_mm256_shuffle_ps(
      _mm256_castpd_ps(y.low), _mm256_castpd_ps(y.high), _MM_SHUFFLE(2, 0, 2, 0)));
  const __m256i moved =
      _mm256_add_epi32(_mm256_slli_epi32(words, kAbove), _mm256_set1_epi32(kMargin << kAbove));
  // Signed, the middle between two singles is the least of all words.
  const int32_t bound = int32_t(0x80000000u + (kMargin << (kAbove + 1)) - 1);
  return in_all_lanes(_mm256_cmpgt_epi32(moved, _mm256_set1_epi32(bound)));
}

// Whole blocks while ordinary(x...) finds them ordinary and compute(x...) decides them; finish(y,
// x...) puts on the rounded results what rounding is indifferent to.
template <uint32_t kMargin, class Ordinary, class Compute, class Finish>
static inline int32_t nearest_blocks(const Arrays<float>& arrays, int32_t i, int32_t last,
                                     Ordinary ordinary, Compute compute, Finish finish) {
  const float* const src = arrays.src1;
  float* const dst = arrays.dst1;
  for (; i + kLanes <= last; i += kLanes) {
    const Singles x = load_lanes(src + i);
    if (__builtin_expect(!ordinary(x), 0)) break;
    const Doubles y = compute(x);
    if (__builtin_expect(!all_decided<kMargin>(y), 0)) break;
    store_lanes(dst + i, finish(rounded(y), x));
  }
  return i;
}

// The same of two sources.
template <uint32_t kMargin, class Ordinary, class Compute, class Finish>
static inline int32_t nearest_pairs(const Arrays<float>& arrays, int32_t i, int32_t last,
                                    Ordinary ordinary, Compute compute, Finish finish) {
  for (; i + kLanes <= last; i += kLanes) {
    const Singles a = load_lanes(arrays.src1 + i), b = load_lanes(arrays.src2 + i);
    if (__builtin_expect(!ordinary(a, b), 0)) break;
    const Doubles y = compute(a, b);
    if (__builtin_expect(!all_decided<kMargin>(y), 0)) break;
    store_lanes(arrays.dst1 + i, finish(rounded(y), a));
  }
  return i;
}

// The function is odd: compute(a) takes magnitudes.
static inline Singles with_sign(Singles y, Singles x) { return either(y, sign_of(x)); }
static inline Singles as_it_is(Singles y, Singles) { return y; }

// Whether numbers, or magnitudes, are from the pattern kLeast on and below kBound.
template <uint32_t kLeast, uint32_t kBound>
static inline __m256i is_from(Singles x) {
  const __m256i from =
      _mm256_sub_epi32(patterns_of(x), _mm256_set1_epi32(int32_t(0x80000000u + kLeast)));
  const int32_t bound = int32_t(0x80000000u + (kBound - kLeast));
  return _mm256_cmpgt_epi32(_mm256_set1_epi32(bound), from);
}

template <uint32_t kLeast, uint32_t kBound>
static inline bool all_from(Singles x) {
  return in_all_lanes(is_from<kLeast, kBound>(x));
}

template <uint32_t kLeast, uint32_t kBound>
static inline bool all_within(Singles x) {
  return all_from<kLeast, kBound>(magnitude_of(x));
}

// Horner's scheme in fused operations; the coefficients, highest power first, are a template's
// argument.
template <const auto& kC>
static inline Doubles fused_polynomial(Doubles x) {
  Doubles sum = all_doubles(kC[0]);
#pragma GCC unroll 32
  for (size_t k = 1; k < sizeof kC / sizeof kC[0]; ++k) sum = fused(sum, x, all_doubles(kC[k]));
  return sum;
}

template <const auto& kC>
static inline Singles fused_polynomial(Singles x) {
  Singles sum = all_lanes(kC[0]);
#pragma GCC unroll 8
  for (size_t k = 1; k < sizeof kC / sizeof kC[0]; ++k)
    sum = _mm256_fmadd_ps(sum, x, all_lanes(kC[k]));
  return sum;
}

// The same from the even powers and the odd ones by themselves: half as long a chain.
template <const auto& kC>
static inline Doubles split_polynomial(Doubles x) {
  constexpr size_t kCount = sizeof kC / sizeof kC[0];
  const Doubles square = x * x;
  Doubles a = all_doubles(kC[0]), b = all_doubles(kC[1]);
#pragma GCC unroll 32
  for (size_t k = 2; k + 1 < kCount; k += 2) {
    a = fused(a, square, all_doubles(kC[k]));
    b = fused(b, square, all_doubles(kC[k + 1]));
  }
  if constexpr (kCount % 2) return fused(b, x, fused(a, square, all_doubles(kC[kCount - 1])));
  return fused(a, x, b);
}

// ---- Masks and selection, lane by lane

struct DoubleMask {
  __m256d low, high;
};

static inline DoubleMask is_less(Doubles a, Doubles b) {
  return {_mm256_cmp_pd(a.low, b.low, _CMP_LT_OS), _mm256_cmp_pd(a.high, b.high, _CMP_LT_OS)};
}

// By one instruction, for which the compiler would compare the mask with 0 first.
static inline __m256d select(__m256d mask, __m256d yes, __m256d no) {
  __m256d selected;
  asm("vblendvpd %3, %2, %1, %0" : "=x"(selected) : "x"(no), "xm"(yes), "x"(mask));
  return selected;
}

static inline Doubles select(DoubleMask mask, Doubles yes, Doubles no) {
  return {select(mask.low, yes.low, no.low), select(mask.high, yes.high, no.high)};
}

// By bits.
static inline Doubles both(Doubles a, Doubles b) {
  return {_mm256_and_pd(a.low, b.low), _mm256_and_pd(a.high, b.high)};
}

static inline Doubles differing(Doubles a, Doubles b) {
  return {_mm256_xor_pd(a.low, b.low), _mm256_xor_pd(a.high, b.high)};
}

static inline Doubles without_sign(Doubles x) {
  const __m256d sign = _mm256_set1_pd(-0.0);
  return {_mm256_andnot_pd(sign, x.low), _mm256_andnot_pd(sign, x.high)};
}

// Zeros where the mask is not set.
static inline Doubles kept(DoubleMask mask, Doubles x) {
  return {_mm256_and_pd(mask.low, x.low), _mm256_and_pd(mask.high, x.high)};
}

static inline Doubles smaller(Doubles a, Doubles b) {
  return {_mm256_min_pd(a.low, b.low), _mm256_min_pd(a.high, b.high)};
}

static inline Doubles larger(Doubles a, Doubles b) {
  return {_mm256_max_pd(a.low, b.low), _mm256_max_pd(a.high, b.high)};
}

#endif
