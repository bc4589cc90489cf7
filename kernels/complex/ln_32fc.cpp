// SPDX-License-Identifier: MIT
//
// Complex natural logarithm, single precision.
#include "kernels/complex/frame.h"
#include "scalar/clog.h"

LUX_CONVERTER(log, complex_log)

LUX_KERNELS_32FC(Ln, 1_1, _nox_clogf_scalar)
