// SPDX-License-Identifier: MIT
//
// Complex hyperbolic cosine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_KERNELS_64FC(Cosh, 1_1, complex_cosh)
