// SPDX-License-Identifier: MIT
//
// What the packed steps of the error functions in single precision share: the cell of each magnitude, and
// look-up in a table whose rows are four singles.
#ifndef LUX_KERNELS_ERF_ROWS_32F_STEP_H
#define LUX_KERNELS_ERF_ROWS_32F_STEP_H

#include "kernels/grid.h"
#include "kernels/lanes.h"

// a = k/32 + r, k in the low bits of `shifted`.
struct Reduced {
  Singles shifted, r;
};

static inline Reduced reduce(Singles a) {
  const OnGrid at = to_grid<32>(a);
  return {at.shifted, a - at.multiple};
}

static inline uint32_t cell_of(const float* shifted) { return Grid<32>::index(shifted); }

// c[i]: the i-th single of the rows of all lanes.
template <int kTerms>
struct Coefficients {
  Singles c[kTerms];
};

template <class Row>
static inline const float* row_of(const Row* rows, const float* shifted) {
  return rows[cell_of(shifted)].c;
}

// All four singles, or the first two.
template <int kTerms, class Row>
static inline Coefficients<kTerms> look_up(const Row* rows, Singles cells) {
  alignas(Singles) float shifted[kLanes];
  lay_out(shifted, cells);
  const auto row = [&](int lane) { return row_of(rows, shifted + lane); };
  if constexpr (kTerms == 4) {
    const FourLanes c = turned_rows(row);
    return {{c.first, c.second, c.third, c.fourth}};
  } else {
    const PairLanes c = turned_pairs(row);
    return {{c.first, c.second}};
  }
}

// c[0] + c[1] r + ...
template <int kTerms>
static inline Singles row_polynomial(const Coefficients<kTerms>& row, Singles r, int lowest = 0) {
  Singles sum = row.c[kTerms - 1];
#pragma GCC unroll 4
  for (int i = kTerms - 2; i >= lowest; --i) sum = sum * r + row.c[i];
  return sum;
}

#endif
