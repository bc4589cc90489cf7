// SPDX-License-Identifier: MIT
//
// The complex functions of one number under their exported names.
#include "complex/functions.h"

template <class Routine, class... Numbers>
__attribute__((always_inline)) static inline Lux64fc routine(Routine function,
                                                             const Numbers&... numbers) {
  Lux64fc result;
  in_memory(&result) = function(in_memory(&numbers)...);
  return result;
}

Lux64fc noxcsqrt_scalar(Lux64fc z) { return routine(complex_sqrt, z); }
Lux64fc noxcpow_scalar(Lux64fc base, Lux64fc exponent) {
  return routine(complex_pow, base, exponent);
}
Lux64fc noxcexp_scalar(Lux64fc z) { return routine(complex_exp, z); }
Lux64fc noxclog_scalar(Lux64fc z) { return routine(complex_log, z); }
Lux64fc noxclog10_scalar(Lux64fc z) { return routine(complex_log10, z); }
Lux64fc noxccos_scalar(Lux64fc z) { return routine(complex_cos, z); }
Lux64fc noxcsin_scalar(Lux64fc z) { return routine(complex_sin, z); }
Lux64fc noxctan_scalar(Lux64fc z) { return routine(complex_tan, z); }
Lux64fc noxcacos_scalar(Lux64fc z) { return routine(complex_acos, z); }
Lux64fc noxcasin_scalar(Lux64fc z) { return routine(complex_asin, z); }
Lux64fc noxcatan_scalar(Lux64fc z) { return routine(complex_atan, z); }
Lux64fc noxccosh_scalar(Lux64fc z) { return routine(complex_cosh, z); }
Lux64fc noxcsinh_scalar(Lux64fc z) { return routine(complex_sinh, z); }
Lux64fc noxctanh_scalar(Lux64fc z) { return routine(complex_tanh, z); }
Lux64fc noxcacosh_scalar(Lux64fc z) { return routine(complex_acosh, z); }
Lux64fc noxcasinh_scalar(Lux64fc z) { return routine(complex_asinh, z); }
Lux64fc noxcatanh_scalar(Lux64fc z) { return routine(complex_atanh, z); }
