// SPDX-License-Identifier: MIT
//
// Complex powers, all elements to one power, double precision.
#include "kernels/complex/frame.h"
#include "scalar/cpow.h"

LUX_KERNELS_64FC(Powx, 2_1_1, complex_pow)
