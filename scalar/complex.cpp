// SPDX-License-Identifier: MIT
//
// The complex functions of one number under their exported names.
#include "scalar/cacosh.h"
#include "scalar/casinh.h"
#include "scalar/csqrt.h"

Lux64fc noxcsqrt_scalar(Lux64fc z) { return complex_sqrt(z); }
Lux64fc noxcacos_scalar(Lux64fc z) { return complex_acos(z); }
Lux64fc noxcasin_scalar(Lux64fc z) { return complex_asin(z); }
Lux64fc noxcacosh_scalar(Lux64fc z) { return complex_acosh(z); }
Lux64fc noxcasinh_scalar(Lux64fc z) { return complex_asinh(z); }
