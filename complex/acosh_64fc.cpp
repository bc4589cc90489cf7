// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic cosine, double precision.
#include "complex/frame.h"
#include "complex/cacosh.h"

LUX_KERNELS_64FC(Acosh, 1_1, complex_acosh)
