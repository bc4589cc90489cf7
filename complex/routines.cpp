// SPDX-License-Identifier: MIT
//
// The complex functions of one number under their exported names.
#include "complex/functions.h"

Lux64fc noxcsqrt_scalar(Lux64fc z) { return complex_sqrt(z); }
Lux64fc noxcpow_scalar(Lux64fc base, Lux64fc exponent) { return complex_pow(base, exponent); }
Lux64fc noxcexp_scalar(Lux64fc z) { return complex_exp(z); }
Lux64fc noxclog_scalar(Lux64fc z) { return complex_log(z); }
Lux64fc noxclog10_scalar(Lux64fc z) { return complex_log10(z); }
Lux64fc noxccos_scalar(Lux64fc z) { return complex_cos(z); }
Lux64fc noxcsin_scalar(Lux64fc z) { return complex_sin(z); }
Lux64fc noxctan_scalar(Lux64fc z) { return complex_tan(z); }
Lux64fc noxcacos_scalar(Lux64fc z) { return complex_acos(z); }
Lux64fc noxcasin_scalar(Lux64fc z) { return complex_asin(z); }
Lux64fc noxcatan_scalar(Lux64fc z) { return complex_atan(z); }
Lux64fc noxccosh_scalar(Lux64fc z) { return complex_cosh(z); }
Lux64fc noxcsinh_scalar(Lux64fc z) { return complex_sinh(z); }
Lux64fc noxctanh_scalar(Lux64fc z) { return complex_tanh(z); }
Lux64fc noxcacosh_scalar(Lux64fc z) { return complex_acosh(z); }
Lux64fc noxcasinh_scalar(Lux64fc z) { return complex_asinh(z); }
Lux64fc noxcatanh_scalar(Lux64fc z) { return complex_atanh(z); }
