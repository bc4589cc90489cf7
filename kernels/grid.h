// SPDX-License-Identifier: MIT
//
// Rounding to a grid by one addition: the sum of a small number and 1.5 2^23 / kSteps, a single
// whose ulp is 1/kSteps, is rounded to a multiple of that, and its pattern less that of the shifter
// is the multiple's number.
#ifndef LUX_KERNELS_GRID_H
#define LUX_KERNELS_GRID_H

#include "kernels/lanes.h"

// kSteps to the unit, a power of two.
template <int kSteps>
struct Grid {
  static constexpr float kShifter = 0x1.8p+23f / kSteps;
  static constexpr uint32_t kBits = __builtin_bit_cast(uint32_t, kShifter);

  static uint32_t index(const float* shifted) { return load_bits(shifted) - kBits; }

#ifndef LUX_WIDE
  // By the x87 unit.
  static uint32_t index(long double x) {
    const float shifted = store_f32(float(x + kShifter));
    return index(&shifted);
  }
#endif
};

// x is the multiple and a rest; the multiple's number is in the low bits of `shifted`.
struct OnGrid {
  Singles shifted, multiple;
};

template <int kSteps>
static inline Singles shifted_to_grid(Singles x) {
  return x + Grid<kSteps>::kShifter;
}

template <int kSteps>
static inline OnGrid to_grid(Singles x) {
  const Singles shifted = shifted_to_grid<kSteps>(x);
  return {shifted, shifted - Grid<kSteps>::kShifter};
}

#endif
