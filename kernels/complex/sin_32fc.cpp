// SPDX-License-Identifier: MIT
//
// Complex sine, single precision.
#include "kernels/complex/frame.h"
#include "scalar/chyper.h"

LUX_CONVERTER(sin, complex_sin)

LUX_KERNELS_32FC(Sin, 1_1, _nox_csinf_scalar)
