// SPDX-License-Identifier: MIT
//
// Complex sine, double precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_KERNELS_64FC(Sin, 1_1, complex_sin)
