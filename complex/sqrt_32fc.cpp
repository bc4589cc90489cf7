// SPDX-License-Identifier: MIT
//
// Complex square root, single precision.
#include "complex/frame.h"
#include "complex/csqrt.h"

LUX_CONVERTER(sqrt, complex_sqrt)

LUX_KERNELS_32FC(Sqrt, 1_1, _nox_csqrtf_scalar)
