// SPDX-License-Identifier: MIT
//
// Complex cosine, single precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_CONVERTER(cos, complex_cos)

LUX_KERNELS_32FC(Cos, 1_1, _nox_ccosf_scalar)
