// SPDX-License-Identifier: MIT
//
// Complex exponential, single precision.
#include "complex/frame.h"
#include "complex/cexp.h"

LUX_CONVERTER(exp, complex_exp)

LUX_KERNELS_32FC(Exp, 1_1, _nox_cexpf_scalar)
