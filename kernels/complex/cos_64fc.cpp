// SPDX-License-Identifier: MIT
//
// Complex cosine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_KERNELS_64FC(Cos, 1_1, complex_cos)
