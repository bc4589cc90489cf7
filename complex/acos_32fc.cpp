// SPDX-License-Identifier: MIT
//
// Complex arc cosine, single precision.
#include "complex/frame.h"
#include "complex/cacosh.h"

LUX_CONVERTER(acos, complex_acos)

LUX_KERNELS_32FC(Acos, 1_1, _nox_cacosf_scalar)
