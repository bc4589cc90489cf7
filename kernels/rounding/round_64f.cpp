// SPDX-License-Identifier: MIT
// The nearest integer, halves away from zero.
#include "kernels/rounding/rounding.h"

Status luxsRound_64f(const double* src, double* dst, int32_t len) {
  return round_array<Direction::kNearestAway>(src, dst, len);
}
