// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic tangent, double precision.
#include "kernels/complex/frame.h"
#include "scalar/catanh.h"

LUX_KERNELS_64FC(Atanh, 1_1, complex_atanh)
