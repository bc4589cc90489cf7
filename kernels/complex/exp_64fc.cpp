// SPDX-License-Identifier: MIT
//
// Complex exponential, double precision.
#include "kernels/complex/frame.h"
#include "scalar/cexp.h"

LUX_KERNELS_64FC(Exp, 1_1, complex_exp)
