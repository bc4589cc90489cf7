// SPDX-License-Identifier: MIT
//
// Complex cosine, single precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_CONVERTER(cos, complex_cos)

LUX_KERNELS_32FC(Cos, 1_1, _nox_ccosf_scalar)
