// SPDX-License-Identifier: MIT
//
// Complex natural logarithm, single precision.
#include "complex/frame.h"
#include "complex/clog.h"

LUX_CONVERTER(log, complex_log)

LUX_KERNELS_32FC(Ln, 1_1, _nox_clogf_scalar)
