// SPDX-License-Identifier: MIT
//
// Complex inverse hyperbolic cosine, single precision.
#include "complex/frame.h"
#include "complex/cacosh.h"

LUX_CONVERTER(acosh, complex_acosh)

LUX_KERNELS_32FC(Acosh, 1_1, _nox_cacoshf_scalar)
