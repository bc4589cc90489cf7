// SPDX-License-Identifier: MIT
//
// Complex hyperbolic sine, double precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_KERNELS_64FC(Sinh, 1_1, complex_sinh)
