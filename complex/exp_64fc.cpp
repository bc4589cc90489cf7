// SPDX-License-Identifier: MIT
//
// Complex exponential, double precision.
#include "complex/frame.h"
#include "complex/cexp.h"

LUX_KERNELS_64FC(Exp, 1_1, complex_exp)
