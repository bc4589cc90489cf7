// SPDX-License-Identifier: MIT
// Integer part and fraction, both with the sign of the element.
#include "kernels/rounding/rounding.h"

Status luxsModf_32f(const float* src, float* dst1, float* dst2, int32_t len) {
  return split_array<&WideLibrary::Modf_32f>(src, dst1, dst2, len);
}
