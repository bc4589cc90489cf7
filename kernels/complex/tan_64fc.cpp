// SPDX-License-Identifier: MIT
//
// Complex tangent, double precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_KERNELS_64FC(Tan, 1_1, complex_tan)
