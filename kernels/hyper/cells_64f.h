// SPDX-License-Identifier: MIT
//
// What the hyperbolic functions of double-precision arrays share: blocks of four magnitudes and
// cells of width 1/64.
#ifndef LUX_KERNELS_HYPER_CELLS_64F_H
#define LUX_KERNELS_HYPER_CELLS_64F_H

#include "kernels/frame.h"

// All four magnitudes below the double with this upper word.
static inline bool all_below(const double* x, uint32_t bound) {
  uint32_t below = ~0u;
  for (int lane = 0; lane < 4; ++lane) below &= upper_magnitude(x + lane) - bound;
  return int32_t(below) < 0;
}

// The nearest multiple of 1/64. Next to a tie it may be the other neighbour, since the sum is
// rounded twice.
static inline uint32_t nearest_cell(long double a) {
  constexpr float kShifter = 0x1.8p+46f;  // its ulp as a double is 1/64
  double sum;
  put(&sum, a + kShifter);
  return load_words(&sum).lower;
}

#endif
