// SPDX-License-Identifier: MIT
//
// Complex hyperbolic sine, single precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_CONVERTER(sinh, complex_sinh)

LUX_KERNELS_32FC(Sinh, 1_1, _nox_csinhf_scalar)
