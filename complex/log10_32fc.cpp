// SPDX-License-Identifier: MIT
//
// Complex decimal logarithm, single precision.
#include "complex/frame.h"
#include "complex/clog.h"

LUX_CONVERTER(log10, complex_log10)

LUX_KERNELS_32FC(Log10, 1_1, _nox_clog10f_scalar)
