// SPDX-License-Identifier: MIT
// Integer part and fraction, both with the sign of the element.
#include "kernels/rounding/rounding.h"

Status luxsModf_64f(const double* src, double* dst1, double* dst2, int32_t len) {
  return split_array<&WideLibrary::Modf_64f>(src, dst1, dst2, len);
}
