// SPDX-License-Identifier: MIT
#include "kernels/trig/arcsine_32f_step.h"
#include "kernels/wide_step.h"

#define ARCSINE(family, grade, polynomial, combine)                      \
  LUX_WIDE_KERNEL(family, 32f, grade) {                                  \
    return wide_blocks_below(arrays, kBeyondOne, first, last,            \
                             packed_block<polynomial, combine, kLanes>); \
  }
ARCSINE(Asin, A21, kAsin21, combine_asin)
ARCSINE(Asin, A11, kAsin11, combine_asin)
ARCSINE(Acos, A21, kAsin21, combine_acos)
ARCSINE(Acos, A11, kAsin11, combine_acos)
