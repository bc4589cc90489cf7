// SPDX-License-Identifier: MIT
//
// Complex hyperbolic tangent, double precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_KERNELS_64FC(Tanh, 1_1, complex_tanh)
