// SPDX-License-Identifier: MIT
//
// Complex hyperbolic cosine, double precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_KERNELS_64FC(Cosh, 1_1, complex_cosh)
