// SPDX-License-Identifier: MIT
// Each element without its fraction.
#include "kernels/rounding/rounding.h"

Status luxsTrunc_64f(const double* src, double* dst, int32_t len) {
  return round_array<Direction::kZero>(src, dst, len);
}
