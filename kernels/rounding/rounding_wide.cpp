// SPDX-License-Identifier: MIT
//
// Rounding to integers and cutting, by the processor's own instruction, of any elements.
#include "kernels/wide_step.h"

// The processor's, which raise no inexact.
constexpr int kNearest = _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC,
              kDown = _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC,
              kUp = _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC,
              kZero = _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC;

// The words for both types.
static inline __m256 load(const float* from) { return _mm256_loadu_ps(from); }
static inline __m256d load(const double* from) { return _mm256_loadu_pd(from); }
static inline void store(float* to, __m256 x) { _mm256_storeu_ps(to, x); }
static inline void store(double* to, __m256d x) { _mm256_storeu_pd(to, x); }
template <int kDirection>
static inline __m256 rounded(__m256 x) {
  return _mm256_round_ps(x, kDirection);
}
template <int kDirection>
static inline __m256d rounded(__m256d x) {
  return _mm256_round_pd(x, kDirection);
}
static inline __m256 masked(__m256 mask, __m256 x) { return _mm256_and_ps(mask, x); }
static inline __m256d masked(__m256d mask, __m256d x) { return _mm256_and_pd(mask, x); }
static inline __m256 joined(__m256 a, __m256 b) { return _mm256_or_ps(a, b); }
static inline __m256d joined(__m256d a, __m256d b) { return _mm256_or_pd(a, b); }
static inline __m256 not_equal(__m256 a, __m256 b) { return _mm256_cmp_ps(a, b, _CMP_NEQ_UQ); }
static inline __m256d not_equal(__m256d a, __m256d b) { return _mm256_cmp_pd(a, b, _CMP_NEQ_UQ); }
static inline __m256 all(float, double x) { return _mm256_set1_ps(float(x)); }
static inline __m256d all(double, double x) { return _mm256_set1_pd(x); }

template <class E, class Compute>
static inline int32_t each(const Arrays<E>& arrays, int32_t i, int32_t last, Compute compute) {
  constexpr int32_t kStep = sizeof(__m256) / sizeof(E);
  for (; i + kStep <= last; i += kStep) store(arrays.dst1 + i, compute(load(arrays.src1 + i)));
  return i;
}

template <int kDirection, class E>
static inline int32_t round_all(const Arrays<E>& arrays, int32_t first, int32_t last) {
  return each(arrays, first, last, [](auto x) { return rounded<kDirection>(x); });
}

// The largest number below 1/2 lifts halves to the next integer, by the rounding of the sum, and nothing
// smaller.
template <class E>
static inline int32_t round_away(const Arrays<E>& arrays, int32_t first, int32_t last) {
  return each(arrays, first, last, [](auto x) {
    constexpr double kNearlyHalf = sizeof(E) == 4 ? 0x1.fffffep-2 : 0x1.fffffffffffffp-2;
    return rounded<kZero>(x + joined(masked(all(E(), -0.), x), all(E(), kNearlyHalf)));
  });
}

template <class E>
static inline int32_t split_all(const Arrays<E>& arrays, int32_t i, int32_t last) {
  constexpr int32_t kStep = sizeof(__m256) / sizeof(E);
  for (; i + kStep <= last; i += kStep) {
    const auto x = load(arrays.src1 + i), sign = masked(all(E(), -0.), x), cut = rounded<kZero>(x);
    // An infinity leaves no fraction, a NaN itself.
    const auto fraction =
        masked(not_equal(joined(x, all(E(), -0.)), all(E(), -__builtin_inf())), x - cut);
    store(arrays.dst1 + i, cut);
    store(arrays.dst2 + i, joined(fraction, sign));
  }
  return i;
}

#define ROUNDING(type)                                                            \
  LUX_WIDE_EXACT(Floor, type) { return round_all<kDown>(arrays, first, last); }   \
  LUX_WIDE_EXACT(Ceil, type) { return round_all<kUp>(arrays, first, last); }      \
  LUX_WIDE_EXACT(Trunc, type) { return round_all<kZero>(arrays, first, last); }   \
  LUX_WIDE_EXACT(Rint, type) { return round_all<kNearest>(arrays, first, last); } \
  LUX_WIDE_EXACT(Round, type) { return round_away(arrays, first, last); }         \
  LUX_WIDE_EXACT(Modf, type) { return split_all(arrays, first, last); }
ROUNDING(32f)
ROUNDING(64f)
