// SPDX-License-Identifier: MIT
//
// Complex arc tangent, double precision.
#include "complex/frame.h"
#include "complex/catanh.h"

LUX_KERNELS_64FC(Atan, 1_1, complex_atan)
