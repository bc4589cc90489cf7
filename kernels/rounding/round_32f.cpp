// SPDX-License-Identifier: MIT
// The nearest integer, halves away from zero.
#include "kernels/rounding/rounding.h"

Status luxsRound_32f(const float* src, float* dst, int32_t len) {
  return round_array<Direction::kNearestAway>(src, dst, len);
}
