// SPDX-License-Identifier: MIT
//
// Complex hyperbolic cosine, single precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_CONVERTER(cosh, complex_cosh)

LUX_KERNELS_32FC(Cosh, 1_1, _nox_ccoshf_scalar)
