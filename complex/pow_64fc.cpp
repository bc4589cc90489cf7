// SPDX-License-Identifier: MIT
//
// Complex powers, each element to a power of its own, double precision.
#include "complex/frame.h"
#include "complex/cpow.h"

LUX_KERNELS_64FC(Pow, 2_1, complex_pow)
