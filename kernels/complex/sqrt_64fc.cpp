// SPDX-License-Identifier: MIT
//
// Complex square root, double precision.
#include "kernels/complex/frame.h"
#include "scalar/csqrt.h"

LUX_KERNELS_64FC(Sqrt, 1_1, complex_sqrt)
