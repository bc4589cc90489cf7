// SPDX-License-Identifier: MIT
//
// The complex functions of one number under their exported names.
#include "scalar/csqrt.h"

Lux64fc noxcsqrt_scalar(Lux64fc z) { return complex_sqrt(z); }
