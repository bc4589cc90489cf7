// SPDX-License-Identifier: MIT
//
// Complex hyperbolic tangent, single precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_CONVERTER(tanh, complex_tanh)

LUX_KERNELS_32FC(Tanh, 1_1, _nox_ctanhf_scalar)
