// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic sine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/casinh.h"

LUX_KERNELS_64FC(Asinh, 1_1, complex_asinh)
