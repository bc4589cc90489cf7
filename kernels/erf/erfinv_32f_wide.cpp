// SPDX-License-Identifier: MIT
#include "kernels/erf/erfinv_32f_step.h"
#include "kernels/wide_step.h"

template <auto kPolynomial>
static inline int32_t erfinv_blocks(const Arrays<float>& arrays, int32_t first, int32_t last) {
  return wide_blocks(
      arrays, first, last, [](Singles x) { return all_within(magnitude_of(x), kLeast, kOne); },
      packed_block<kPolynomial, kLanes>);
}

LUX_WIDE_KERNEL(ErfInv, 32f, A21) { return erfinv_blocks<cubic>(arrays, first, last); }
LUX_WIDE_KERNEL(ErfInv, 32f, A11) { return erfinv_blocks<linear>(arrays, first, last); }
