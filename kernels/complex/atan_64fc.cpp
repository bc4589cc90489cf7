// SPDX-License-Identifier: MIT
//
// Complex arc tangent, double precision.
#include "kernels/complex/frame.h"
#include "scalar/catanh.h"

LUX_KERNELS_64FC(Atan, 1_1, complex_atan)
