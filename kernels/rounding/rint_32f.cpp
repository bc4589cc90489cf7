// SPDX-License-Identifier: MIT
// NearbyInt under its other name.
#include "kernels/rounding/rounding.h"

Status luxsRint_32f(const float* src, float* dst, int32_t len) {
  return round_as_caller(src, dst, len);
}
