// SPDX-License-Identifier: MIT
//
// Complex arc cosine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/cacosh.h"

LUX_KERNELS_64FC(Acos, 1_1, complex_acos)
