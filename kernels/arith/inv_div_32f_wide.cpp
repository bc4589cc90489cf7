// SPDX-License-Identifier: MIT
#include "kernels/wide_step.h"

static inline bool no_zero(Singles x) { return !in_any_lane(is_equal(x, all_lanes(0.0f))); }

LUX_WIDE_KERNEL(Inv, 32f, A24) {
  return wide_blocks(arrays, first, last, no_zero, [](const float* x, float* y) {
    store_lanes(y, all_lanes(1.0f) / load_lanes(x));
  });
}

LUX_WIDE_KERNEL(Div, 32f, A24) {
  return wide_pairs(
      arrays, first, last, [](Singles, Singles divisor) { return no_zero(divisor); },
      [](Singles numerator, Singles divisor) { return numerator / divisor; });
}
