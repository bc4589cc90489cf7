// SPDX-License-Identifier: MIT
//
// Complex sine, single precision.
#include "complex/frame.h"
#include "complex/chyper.h"

LUX_CONVERTER(sin, complex_sin)

LUX_KERNELS_32FC(Sin, 1_1, _nox_csinf_scalar)
