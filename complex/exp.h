// SPDX-License-Identifier: MIT
//
// Complex exponential: e^x (cos y + i sin y), e^x and its products in extended precision.
//
// An ordinary element has |x| < 708, where 2^k is a double, and a normal |y| < 2^17. All others are
// taken apart out of line: e^x is extended there too, so a part overflows or underflows only where
// its exact value does.
//
// e^x brings 0.53 units of the last place of 64 bits, sine and cosine 2.5, the product one half:
// 0.502 ulp of a double. Worst error found 0.5009 ulp (sampled).
#ifndef LUX_COMPLEX_EXP_H
#define LUX_COMPLEX_EXP_H

#include "complex/hyperbolic.h"

__attribute__((noinline, cold)) static Complex64 complex_exp_special(const Complex64& z) {
  if (_nox_internal_isnan(z.re))
    return {z.re + z.re, _nox_internal_iszero(z.im) ? z.im : z.re + z.im};
  if (_nox_internal_ispinf(z.re)) return at_angle(z.re, z.im, minus_itself(z.im));
  if (_nox_internal_isninf(z.re)) return at_angle(0, z.im, 0);
  if (_nox_internal_isinf(z.im) || _nox_internal_isnan(z.im)) {
    const double nan = minus_itself(z.im);
    return {nan, nan};
  }
  const Exponential e = exp_parts(bounded_exponent(z.re));
  const long double size = e.fraction * power_of_two(e.exponent);
  long double sine, cosine;
  sine_cosine(z.im, &sine, &cosine);
  return {store_f64(double(size * cosine)), store_f64(double(size * sine))};
}

static inline Complex64 complex_exp(const Complex64& z) {
  if (__builtin_expect(!is_ordinary(&z.re, &z.im), false)) return complex_exp_special(z);
  SineCosine y = short_sine_cosine(load_extended(&z.im));
  asm volatile("" : "+t"(y.sine), "+u"(y.cosine));  // first, so that nothing is spilled
  const Exponential e = exp_parts(load_extended(&z.re));
  const long double size = e.fraction * double_power_of_two(e.exponent);
  return {store_f64(double(size * y.cosine)), store_f64(double(size * y.sine))};
}

#endif
