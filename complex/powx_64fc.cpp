// SPDX-License-Identifier: MIT
//
// Complex powers, all elements to one power, double precision.
#include "complex/frame.h"
#include "complex/cpow.h"

LUX_KERNELS_64FC(Powx, 2_1_1, complex_pow)
