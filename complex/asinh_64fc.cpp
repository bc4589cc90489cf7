// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic sine, double precision.
#include "complex/frame.h"
#include "complex/casinh.h"

LUX_KERNELS_64FC(Asinh, 1_1, complex_asinh)
