// SPDX-License-Identifier: MIT
//
// Complex arc tangent, single precision.
#include "complex/frame.h"
#include "complex/catanh.h"

LUX_CONVERTER(atan, complex_atan)

LUX_KERNELS_32FC(Atan, 1_1, _nox_catanf_scalar)
