// SPDX-License-Identifier: MIT
//
// What the hyperbolic functions of double-precision arrays share: cells of width 1/64.
#ifndef LUX_KERNELS_HYPER_CELLS_64F_H
#define LUX_KERNELS_HYPER_CELLS_64F_H

#include "kernels/frame.h"
#include "kernels/screens.h"

// The nearest multiple of 1/64. Next to a tie it may be the other neighbour, since the sum is
// rounded twice.
static inline uint32_t nearest_cell(long double a) {
  constexpr float kShifter = 0x1.8p+46f;  // its ulp as a double is 1/64
  double sum;
  put(&sum, a + kShifter);
  return load_words(&sum).lower;
}

#endif
