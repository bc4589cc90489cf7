// SPDX-License-Identifier: MIT
//
// The packed steps of the reciprocal cube root in single precision; see kernels/roots/invcbrt_32f.cpp.
#ifndef LUX_KERNELS_ROOTS_INVCBRT_32F_STEP_H
#define LUX_KERNELS_ROOTS_INVCBRT_32F_STEP_H

#include "kernels/lanes.h"
#include "kernels/roots/generated/invcbrt_32f_table.h"  // static_const_table, kStart, kStep

constexpr uint32_t kThirds = 0x5555;  // in 2^-16

// From the first estimate y, which has the sign of x.
template <bool kRefined>
static inline Singles corrected(Singles x, Singles y) {
  const Singles c = x * y * (y * y);
  Singles step = all_lanes(kStep[2]) * c + all_lanes(kStep[1]);
  step = step * c + all_lanes(kStep[0]);
  y = y * step;
  if (!kRefined) return y;
  const Singles cube = x * y * (y * y);
  const Singles rest = 1.0f - cube;
  return y + y * all_lanes(1.0f / 3) * rest;
}

#endif
