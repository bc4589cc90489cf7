// SPDX-License-Identifier: MIT
// The smallest integer not below each element.
#include "kernels/rounding/rounding.h"

Status luxsCeil_32f(const float* src, float* dst, int32_t len) {
  return round_array<Direction::kUp>(src, dst, len);
}
