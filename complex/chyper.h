// SPDX-License-Identifier: MIT
//
// Complex sine, cosine, tangent and their hyperbolic partners.
//
//   sinh(x + iy) = sinh x cos y + i cosh x sin y
//   cosh(x + iy) = cosh x cos y + i sinh x sin y
//   tanh(x + iy) = (sinh x cosh x + i sin y cos y) / (sinh^2 x + cos^2 y)
//   sin(x + iy) = (b, -a) of (a, b) = sinh(-y + ix), tan likewise; cos(x + iy) = cosh(-y + ix)
//
// Products of four extended numbers, each relatively accurate also next to its zeros, and a sum of
// squares: nothing cancels, not even at the poles of tanh. sinh comes from |x| and takes its sign
// from a factor, so symmetries hold bit for bit.
//
// An ordinary element has |x| < 708, where 2^k is a double, and a normal |y| < 2^17. All others go
// out of line; squares of e^3000 are inside the extended range.
//
// sinh and cosh bring 2.1 and 1.1 units of the last place of 64 bits, sine and cosine 2.5, so a
// product is within 0.503 ulp of a double and a quotient within 0.506. Worst errors found
// (sampled): sine and cosine of either kind 0.5010 ulp, tangent 0.5021.
#ifndef LUX_COMPLEX_CHYPER_H
#define LUX_COMPLEX_CHYPER_H

#include "complex/cexp.h"

// Of a hyperbolic argument and of an angle.
struct FourParts {
  long double sinh, cosh, sin, cos;
};

static inline bool is_ordinary(const double* x, const double* y) {
  return __builtin_expect(((upper_word(x) & 0x7FFFFFFF) < kExpBound) & is_short_angle(y), true);
}

static inline long double sign_factor(const double* x) {
  static const float factors[2] = {1, -1};
  return factors[upper_word(x) >> 31];
}

__attribute__((always_inline)) static inline FourParts ordinary_parts(const double* x,
                                                                      const double* y) {
  const Hyperbolic h = sinh_cosh_parts(__builtin_fabsl(load_extended(x)));
  const double scale = double_power_of_two(h.exponent);
  long double sinh = h.sine * scale * sign_factor(x), cosh = h.cosine * scale;
  asm volatile("" : "+t"(sinh), "+u"(cosh));  // two numbers to keep, not four that one is made of
  const SineCosine angle = short_sine_cosine(load_extended(y));
  return {sinh, cosh, angle.sine, angle.cosine};
}

static inline FourParts finite_parts(const double* x, const double* y) {
  FourParts parts;
  const Hyperbolic h = sinh_cosh_parts(__builtin_fabsl(bounded_exponent(*x)));
  const long double scale = power_of_two(h.exponent);
  parts.sinh = h.sine * scale * sign_factor(x);
  parts.cosh = h.cosine * scale;
  sine_cosine(*y, &parts.sin, &parts.cos);
  return parts;
}

static inline Lux64fc sinh_of(const FourParts& p) {
  return rounded(p.sinh * p.cos, p.cosh * p.sin);
}

static inline Lux64fc cosh_of(const FourParts& p) {
  return rounded(p.cosh * p.cos, p.sinh * p.sin);
}

static inline Lux64fc tanh_of(const FourParts& p) {
  const long double factor = 1 / (p.sinh * p.sinh + p.cos * p.cos);
  return rounded(p.sinh * p.cosh * factor, p.sin * p.cos * factor);
}

// ---- Zero angles, angles and exponents out of range, infinities, NaNs

__attribute__((noinline, cold)) static Lux64fc complex_sinh_special(const Lux64fc& z) {
  if (is_finite(z.re) && is_finite(z.im)) return sinh_of(finite_parts(&z.re, &z.im));
  if (_nox_internal_isnan(z.re))
    return {z.re + z.re, _nox_internal_iszero(z.im) ? z.im : z.re + z.im};
  const double nan = minus_itself(z.im);  // of y that is not finite
  if (!_nox_internal_isinf(z.re)) return {_nox_internal_iszero(z.re) ? z.re : nan, nan};
  const Lux64fc positive = at_angle(__builtin_inf(), z.im, nan);
  return {z.re < 0 ? -positive.re : positive.re, positive.im};
}

__attribute__((noinline, cold)) static Lux64fc complex_cosh_special(const Lux64fc& z) {
  if (is_finite(z.re) && is_finite(z.im)) return cosh_of(finite_parts(&z.re, &z.im));
  if (_nox_internal_isnan(z.re))
    return {z.re + z.re, _nox_internal_iszero(z.im) ? z.im : z.re + z.im};
  const double nan = minus_itself(z.im);
  if (!_nox_internal_isinf(z.re)) return {nan, _nox_internal_iszero(z.re) ? z.re : nan};
  const Lux64fc positive = at_angle(__builtin_inf(), z.im, nan);
  return {positive.re, z.re < 0 ? -positive.im : positive.im};
}

__attribute__((noinline, cold)) static Lux64fc complex_tanh_special(const Lux64fc& z) {
  if (is_finite(z.re) && is_finite(z.im)) return tanh_of(finite_parts(&z.re, &z.im));
  if (_nox_internal_isnan(z.re))
    return {z.re + z.re, _nox_internal_iszero(z.im) ? z.im : z.re + z.im};
  if (!_nox_internal_isinf(z.re)) {
    const double nan = minus_itself(z.im);
    return {_nox_internal_iszero(z.re) ? z.re : nan, nan};
  }
  const double one = __builtin_copysign(1.0, z.re);
  if (!is_finite(z.im)) return {one, __builtin_copysign(0.0, z.im)};
  long double sine, cosine;
  sine_cosine(z.im, &sine, &cosine);
  return {one, _nox_internal_iszero(z.im) ? z.im : (sine < 0) == (cosine < 0) ? 0.0 : -0.0};
}

// ---- The six functions. Ordinary arguments of the trigonometric ones need no turn: each sign that
// it changes is changed back.

static inline Lux64fc complex_sinh(const Lux64fc& z) {
  if (!is_ordinary(&z.re, &z.im)) return complex_sinh_special(z);
  return sinh_of(ordinary_parts(&z.re, &z.im));
}

static inline Lux64fc complex_cosh(const Lux64fc& z) {
  if (!is_ordinary(&z.re, &z.im)) return complex_cosh_special(z);
  return cosh_of(ordinary_parts(&z.re, &z.im));
}

static inline Lux64fc complex_tanh(const Lux64fc& z) {
  if (!is_ordinary(&z.re, &z.im)) return complex_tanh_special(z);
  return tanh_of(ordinary_parts(&z.re, &z.im));
}

static inline Lux64fc complex_sin(const Lux64fc& z) {
  if (!is_ordinary(&z.im, &z.re)) return turned_back(complex_sinh_special(turned(z)));
  const FourParts p = ordinary_parts(&z.im, &z.re);
  return rounded(p.cosh * p.sin, p.sinh * p.cos);
}

static inline Lux64fc complex_cos(const Lux64fc& z) {
  if (!is_ordinary(&z.im, &z.re)) return complex_cosh_special(turned(z));
  const FourParts p = ordinary_parts(&z.im, &z.re);
  return rounded(p.cosh * p.cos, -(p.sinh * p.sin));
}

static inline Lux64fc complex_tan(const Lux64fc& z) {
  if (!is_ordinary(&z.im, &z.re)) return turned_back(complex_tanh_special(turned(z)));
  const FourParts p = ordinary_parts(&z.im, &z.re);
  const long double factor = 1 / (p.sinh * p.sinh + p.cos * p.cos);
  return rounded(p.sin * p.cos * factor, p.sinh * p.cosh * factor);
}

#endif
