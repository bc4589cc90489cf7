// SPDX-License-Identifier: MIT
//
// Complex powers, all elements to one power, single precision.
#include "complex/frame.h"
#include "complex/cpow.h"

LUX_CONVERTER_2(pow, complex_pow)

LUX_KERNELS_32FC(Powx, 2_1_1, _nox_cpowf_scalar)
