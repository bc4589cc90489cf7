// SPDX-License-Identifier: MIT
//
// Complex tangent, single precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_CONVERTER(tan, complex_tan)

LUX_KERNELS_32FC(Tan, 1_1, _nox_ctanf_scalar)
