// SPDX-License-Identifier: MIT
//
// log10 x of single-precision arrays; the method is in kernels/explog/log_32f.h.
// Worst error 0.7110 ulp, at 0x3F807FC7 (every positive argument).
#include "kernels/explog/log_32f.h"
#include "kernels/explog/generated/log10_32f_table.h"  // static_const_table

static Status log10_32f(const float* src, float* dst, int32_t len) {
  return log_32f<&WideLibrary::Log10_32f_A24>(static_const_table, src, dst, len);
}

LUX_KERNELS_32F(Log10, 1_1, log10_32f)
