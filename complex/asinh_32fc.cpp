// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic sine, single precision.
#include "complex/frame.h"
#include "complex/casinh.h"

LUX_CONVERTER(asinh, complex_asinh)

LUX_KERNELS_32FC(Asinh, 1_1, _nox_casinhf_scalar)
