// SPDX-License-Identifier: MIT
//
// What the error functions of single-precision arrays share: the cell of each of four magnitudes,
// and packed look-up in a table whose rows are four singles.
#ifndef LUX_KERNELS_ERF_ROWS_32F_H
#define LUX_KERNELS_ERF_ROWS_32F_H

#include "kernels/frame.h"
#include "kernels/grid.h"
#include "kernels/lanes.h"
#include "kernels/screens.h"

// a = k/32 + r, k in the low bits of `shifted`.
struct Reduced {
  __m128 shifted, r;
};

static inline Reduced reduce(__m128 a) {
  const OnGrid at = to_grid<32>(a);
  return {at.shifted, a - at.multiple};
}

static inline uint32_t cell_of(const float* shifted) { return Grid<32>::index(shifted); }

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
    const PairLanes row = turned(row_of(rows, shifted), row_of(rows, shifted + 1),
                                 row_of(rows, shifted + 2), row_of(rows, shifted + 3));
    return {{row.first, row.second}};
  }
}

// c[0] + c[1] r + ...
template <int kTerms>
static inline __m128 row_polynomial(const Coefficients<kTerms>& row, __m128 r, int lowest = 0) {
  __m128 sum = row.c[kTerms - 1];
#pragma GCC unroll 4
  for (int i = kTerms - 2; i >= lowest; --i) sum = sum * r + row.c[i];
  return sum;
}

#endif
