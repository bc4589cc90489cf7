// SPDX-License-Identifier: MIT
//
// Complex natural logarithm, double precision.
#include "complex/frame.h"
#include "complex/clog.h"

LUX_KERNELS_64FC(Ln, 1_1, complex_log)
