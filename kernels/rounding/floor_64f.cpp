// SPDX-License-Identifier: MIT
// The largest integer not above each element.
#include "kernels/rounding/rounding.h"

Status luxsFloor_64f(const double* src, double* dst, int32_t len) {
  return round_array<Direction::kDown>(src, dst, len);
}
