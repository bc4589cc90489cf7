// SPDX-License-Identifier: MIT
//
// Complex arc sine, single precision.
#include "complex/frame.h"
#include "complex/casinh.h"

LUX_CONVERTER(asin, complex_asin)

LUX_KERNELS_32FC(Asin, 1_1, _nox_casinf_scalar)
