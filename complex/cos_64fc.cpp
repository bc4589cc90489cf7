// SPDX-License-Identifier: MIT
//
// Complex cosine, double precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_KERNELS_64FC(Cos, 1_1, complex_cos)
