// SPDX-License-Identifier: MIT
#include "kernels/erf/erf_32f_step.h"
#include "kernels/wide_step.h"

template <int kTerms>
static inline int32_t erf_blocks(const Arrays<float>& arrays, int32_t first, int32_t last) {
  return wide_blocks(
      arrays, first, last,
      [](Singles x) { return all_within(magnitude_of(x), Format<float>::kSmallestNormal, kNaNs); },
      packed_block<kTerms, kLanes>);
}

LUX_WIDE_KERNEL(Erf, 32f, A21) { return erf_blocks<4>(arrays, first, last); }
LUX_WIDE_KERNEL(Erf, 32f, A11) { return erf_blocks<2>(arrays, first, last); }
