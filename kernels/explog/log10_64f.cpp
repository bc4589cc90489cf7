// SPDX-License-Identifier: MIT
//
// log10 x of double-precision arrays; the method is in kernels/explog/log_64f.h.
// Worst error found 0.9338 ulp, at 0x3FEFDFFF62B465F5 (sampled against 200 bits).
#include "kernels/explog/generated/log10_64f_table.h"  // static_const_table

static void _noxdLog10_HA_scalar(const Arrays<double>& arrays, int32_t i, Status* status) {
  log_scalar(static_const_table, arrays, i, status);
}

static Status log10_64f(const double* src, double* dst, int32_t len) {
  return log_64f(static_const_table, _noxdLog10_HA_scalar, src, dst, len);
}

LUX_KERNELS_64F(Log10, 1_1, log10_64f)
