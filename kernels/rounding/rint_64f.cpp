// SPDX-License-Identifier: MIT
// NearbyInt under its other name.
#include "kernels/rounding/rounding.h"

Status luxsRint_64f(const double* src, double* dst, int32_t len) {
  return round_as_caller(src, dst, len);
}
