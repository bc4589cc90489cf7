// SPDX-License-Identifier: MIT
//
// Complex arc cosine, double precision.
#include "complex/frame.h"
#include "complex/cacosh.h"

LUX_KERNELS_64FC(Acos, 1_1, complex_acos)
