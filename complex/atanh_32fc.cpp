// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic tangent, single precision.
#include "complex/frame.h"
#include "complex/catanh.h"

LUX_CONVERTER(atanh, complex_atanh)

LUX_KERNELS_32FC(Atanh, 1_1, _nox_catanhf_scalar)
