// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic tangent, double precision.
#include "complex/frame.h"
#include "complex/catanh.h"

LUX_KERNELS_64FC(Atanh, 1_1, complex_atanh)
