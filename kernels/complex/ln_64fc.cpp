// SPDX-License-Identifier: MIT
//
// Complex natural logarithm, double precision.
#include "kernels/complex/frame.h"
#include "scalar/clog.h"

LUX_KERNELS_64FC(Ln, 1_1, complex_log)
