// SPDX-License-Identifier: MIT
//
// Complex hyperbolic sine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_KERNELS_64FC(Sinh, 1_1, complex_sinh)
