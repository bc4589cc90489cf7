// SPDX-License-Identifier: MIT
// Integers in the caller's rounding direction.
#include "kernels/rounding/rounding.h"

Status luxsNearbyInt_32f(const float* src, float* dst, int32_t len) {
  return round_as_caller(src, dst, len);
}
