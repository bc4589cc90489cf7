// SPDX-License-Identifier: MIT
//
// Complex tangent, double precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_KERNELS_64FC(Tan, 1_1, complex_tan)
