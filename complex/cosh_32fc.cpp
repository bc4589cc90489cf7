// SPDX-License-Identifier: MIT
//
// Complex hyperbolic cosine, single precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_CONVERTER(cosh, complex_cosh)

LUX_KERNELS_32FC(Cosh, 1_1, _nox_ccoshf_scalar)
