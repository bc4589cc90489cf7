// SPDX-License-Identifier: MIT
#include "kernels/erf/erfc_32f_step.h"
#include "kernels/wide_step.h"

LUX_WIDE_KERNEL(Erfc, 32f, A21) {
  return wide_blocks_below(arrays, kNormal, first, last, packed_block<4, kPower21, kLanes>);
}
LUX_WIDE_KERNEL(Erfc, 32f, A11) {
  return wide_blocks_below(arrays, kNormal, first, last, packed_block<2, kPower11, kLanes>);
}
