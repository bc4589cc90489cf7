// SPDX-License-Identifier: MIT
//
// Complex decimal logarithm, double precision.
#include "complex/frame.h"
#include "complex/clog.h"

LUX_KERNELS_64FC(Log10, 1_1, complex_log10)
