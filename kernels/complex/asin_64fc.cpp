// SPDX-License-Identifier: MIT
//
// Complex arc sine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/casinh.h"

LUX_KERNELS_64FC(Asin, 1_1, complex_asin)
