// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic cosine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/cacosh.h"

LUX_KERNELS_64FC(Acosh, 1_1, complex_acosh)
