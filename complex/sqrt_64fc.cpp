// SPDX-License-Identifier: MIT
//
// Complex square root, double precision.
#include "complex/frame.h"
#include "complex/csqrt.h"

LUX_KERNELS_64FC(Sqrt, 1_1, complex_sqrt)
