// SPDX-License-Identifier: MIT
//
// Complex arc sine, single precision.
#include "kernels/complex/frame.h"
#include "scalar/casinh.h"

LUX_CONVERTER(asin, complex_asin)

LUX_KERNELS_32FC(Asin, 1_1, _nox_casinf_scalar)
