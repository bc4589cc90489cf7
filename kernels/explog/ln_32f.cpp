// SPDX-License-Identifier: MIT
//
// ln x of single-precision arrays; the method is in kernels/explog/log_32f.h.
// Worst error 0.7450 ulp, at 0x3F807FAF (every positive argument).
#include "kernels/explog/log_32f.h"
#include "kernels/explog/generated/ln_32f_table.h"  // static_const_table

static Status ln_32f(const float* src, float* dst, int32_t len) {
  return log_32f<&WideLibrary::Ln_32f_A24>(static_const_table, src, dst, len);
}

LUX_KERNELS_32F(Ln, 1_1, ln_32f)
