// SPDX-License-Identifier: MIT
//
// Complex hyperbolic sine, single precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_CONVERTER(sinh, complex_sinh)

LUX_KERNELS_32FC(Sinh, 1_1, _nox_csinhf_scalar)
