// SPDX-License-Identifier: MIT
//
// Complex arc sine, double precision.
#include "complex/frame.h"
#include "complex/casinh.h"

LUX_KERNELS_64FC(Asin, 1_1, complex_asin)
