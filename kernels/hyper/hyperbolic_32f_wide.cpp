// SPDX-License-Identifier: MIT
#include "kernels/hyper/hyperbolic_32f_step.h"
#include "kernels/wide_step.h"

#define HYPERBOLIC(family, grade)                                        \
  LUX_WIDE_KERNEL(family, 32f, grade) {                                  \
    return wide_blocks_below(arrays, kOverflow, first, last,             \
                             packed_block<k##family, k##grade, kLanes>); \
  }
HYPERBOLIC(Cosh, A21)
HYPERBOLIC(Cosh, A11)
HYPERBOLIC(Sinh, A21)
HYPERBOLIC(Sinh, A11)
