// SPDX-License-Identifier: MIT
#include "kernels/roots/root_32f_step.h"
#include "kernels/wide_step.h"

LUX_WIDE_KERNEL(Sqrt, 32f, A24) {
  return wide_blocks(
      arrays, first, last, [](Singles x) { return all_within(x, kLeast, Format<float>::kInf); },
      [](const float* x, float* y) { store_lanes(y, root<kNoZeros>(load_lanes(x))); });
}

LUX_WIDE_KERNEL(InvSqrt, 32f, A24) {
  return wide_blocks(
      arrays, first, last,
      [](Singles x) { return all_within(x, Format<float>::kSmallestNormal, kLarge); },
      [](const float* x, float* y) { store_lanes(y, inverse_root(load_lanes(x))); });
}
