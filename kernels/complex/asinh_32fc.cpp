// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic sine, single precision.
#include "kernels/complex/frame.h"
#include "scalar/casinh.h"

LUX_CONVERTER(asinh, complex_asinh)

LUX_KERNELS_32FC(Asinh, 1_1, _nox_casinhf_scalar)
