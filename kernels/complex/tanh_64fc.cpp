// SPDX-License-Identifier: MIT
//
// Complex hyperbolic tangent, double precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_KERNELS_64FC(Tanh, 1_1, complex_tanh)
