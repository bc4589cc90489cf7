// SPDX-License-Identifier: MIT
//
// Complex sine, double precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_KERNELS_64FC(Sin, 1_1, complex_sin)
