// SPDX-License-Identifier: MIT
//
// What exponential and hyperbolic functions and the trigonometric partners share: hyperbolic
// numbers of one part, sine and cosine of the other.
//
// An ordinary element has |x| < 708, where 2^k is a double, and a normal |y| < 2^17. All others go
// out of line; squares of e^3000 are inside the extended range. sinh comes from |x| and takes its
// sign from a factor, so symmetries hold bit for bit.
//
// sinh and cosh bring 2.1 and 1.1 units of the last place of 64 bits, sine and cosine 2.5, so a
// product is within 0.503 ulp of a double and a quotient within 0.506.
#ifndef LUX_COMPLEX_HYPERBOLIC_H
#define LUX_COMPLEX_HYPERBOLIC_H

#include "complex/number.h"
#include "extended/exponential.h"
#include "extended/sine_cosine.h"

constexpr uint32_t kExpBound = 0x40862000;  // upper word of 708

static inline bool is_ordinary(const double* x, const double* y) {
  return __builtin_expect((upper_magnitude(x) < kExpBound) & is_short_angle(y), true);
}

// Beyond, every product with a sine or cosine overflows or underflows as at the bound.
static inline long double bounded_exponent(const DoubleInMemory& from) {
  const long double x = load_extended(&from);
  return x > 3000 ? 3000 : x < -3000 ? -3000 : x;
}

// Infinite x: a zero or an infinity for each part, the sign from y. `unknown` where y has no sign.
static inline Complex64 at_angle(double size, const DoubleInMemory& y, double unknown) {
  if (_nox_internal_isinf(y) || _nox_internal_isnan(y)) return {size, unknown};
  long double sine, cosine;
  sine_cosine(y, &sine, &cosine);
  const double re = cosine < 0 ? -size : size, im = sine < 0 ? -size : size;
  return {re, _nox_internal_iszero(y) ? y : im};
}

// Of a hyperbolic argument and of an angle.
struct FourParts {
  long double sinh, cosh, sin, cos;
};

__attribute__((always_inline)) static inline FourParts ordinary_parts(const double* x,
                                                                      const double* y) {
  const Hyperbolic h = sinh_cosh_parts(__builtin_fabsl(load_extended(x)));
  const double scale = double_power_of_two(h.exponent);
  long double sinh = h.sine * scale * sign_of(*x), cosh = h.cosine * scale;
  asm volatile("" : "+t"(sinh), "+u"(cosh));  // two numbers to keep, not four that one is made of
  const SineCosine angle = short_sine_cosine(load_extended(y));
  return {sinh, cosh, angle.sine, angle.cosine};
}

static inline FourParts finite_parts(const double* x, const double* y) {
  FourParts parts;
  const Hyperbolic h = sinh_cosh_parts(__builtin_fabsl(bounded_exponent(*x)));
  const long double scale = power_of_two(h.exponent);
  parts.sinh = h.sine * scale * sign_of(*x);
  parts.cosh = h.cosine * scale;
  sine_cosine(*y, &parts.sin, &parts.cos);
  return parts;
}

#endif
