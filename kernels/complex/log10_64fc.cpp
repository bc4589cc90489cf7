// SPDX-License-Identifier: MIT
//
// Complex decimal logarithm, double precision.
#include "kernels/complex/frame.h"
#include "scalar/clog.h"

LUX_KERNELS_64FC(Log10, 1_1, complex_log10)
