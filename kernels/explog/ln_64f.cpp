// SPDX-License-Identifier: MIT
//
// ln x of double-precision arrays; the method is in kernels/explog/log_64f.h.
// Worst error found 0.6738 ulp, at 0x3FEFDFFF1B8354B8 (sampled against 200 bits).
#include "kernels/explog/generated/ln_64f_table.h"  // static_const_table

static void _noxdLn_HA_scalar(const Arrays<double>& arrays, int32_t i, Status* status) {
  log_scalar(static_const_table, arrays, i, status);
}

static Status ln_64f(const double* src, double* dst, int32_t len) {
  return log_64f(static_const_table, _noxdLn_HA_scalar, src, dst, len);
}

LUX_KERNELS_64F(Ln, 1_1, ln_64f)
