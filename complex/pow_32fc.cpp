// SPDX-License-Identifier: MIT
//
// Complex powers, each element to a power of its own, single precision.
#include "complex/frame.h"
#include "complex/cpow.h"

LUX_CONVERTER_2(pow, complex_pow)

LUX_KERNELS_32FC(Pow, 2_1, _nox_cpowf_scalar)
