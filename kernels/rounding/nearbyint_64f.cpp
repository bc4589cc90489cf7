// SPDX-License-Identifier: MIT
// Integers in the caller's rounding direction.
#include "kernels/rounding/rounding.h"

Status luxsNearbyInt_64f(const double* src, double* dst, int32_t len) {
  return round_as_caller(src, dst, len);
}
