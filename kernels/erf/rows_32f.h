// SPDX-License-Identifier: MIT
//
// What the error functions of single-precision arrays share: the cell of each of four magnitudes,
// and packed look-up in a table whose rows are four singles.
#ifndef LUX_KERNELS_ERF_ROWS_32F_H
#define LUX_KERNELS_ERF_ROWS_32F_H

#include "kernels/frame.h"
#include "kernels/lanes.h"

// a = k/32 + r, k in the low bits of `shifted`.
struct Reduced {
  __m128 shifted, r;
};

constexpr float kShifter = 0x1.8p+18f;  // its ulp is 1/32
constexpr uint32_t kShifterBits = 0x48C00000;

static inline Reduced reduce(__m128 a) {
  const __m128 shifter = _mm_set1_ps(kShifter), shifted = _mm_add_ps(a, shifter);
  return {shifted, _mm_sub_ps(a, _mm_sub_ps(shifted, shifter))};
}

static inline uint32_t cell_of(const float* shifted) { return load_bits(shifted) - kShifterBits; }

// c[i]: the i-th single of the rows of all lanes.
template <int kTerms>
struct Coefficients {
  __m128 c[kTerms];
};

template <class Row>
static inline const float* row_of(const Row* rows, const float* shifted) {
  return rows[cell_of(shifted)].c;
}

// All four singles, or the first two.
template <int kTerms, class Row>
static inline Coefficients<kTerms> look_up(const Row* rows, __m128 cells) {
  alignas(16) float shifted[4];
  _mm_store_ps(shifted, cells);
  if constexpr (kTerms == 4) {
    __m128 a = _mm_load_ps(row_of(rows, shifted)), b = _mm_load_ps(row_of(rows, shifted + 1)),
           c = _mm_load_ps(row_of(rows, shifted + 2)), d = _mm_load_ps(row_of(rows, shifted + 3));
    _MM_TRANSPOSE4_PS(a, b, c, d);
    return {{a, b, c, d}};
  } else {
    const auto pair = [&](int lane) {
      return reinterpret_cast<const __m64*>(row_of(rows, shifted + lane));
    };
    const __m128 low = _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), pair(0)), pair(1));
    const __m128 high = _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), pair(2)), pair(3));
    return {{_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)),
             _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))}};
  }
}

// c[0] + c[1] r + ...
template <int kTerms>
static inline __m128 polynomial(const Coefficients<kTerms>& row, __m128 r, int lowest = 0) {
  __m128 sum = row.c[kTerms - 1];
#pragma GCC unroll 4
  for (int i = kTerms - 2; i >= lowest; --i) sum = _mm_add_ps(_mm_mul_ps(sum, r), row.c[i]);
  return sum;
}

#endif
