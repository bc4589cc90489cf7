// SPDX-License-Identifier: MIT
//
// Complex exponential, single precision.
#include "kernels/complex/frame.h"
#include "scalar/cexp.h"

LUX_CONVERTER(exp, complex_exp)

LUX_KERNELS_32FC(Exp, 1_1, _nox_cexpf_scalar)
