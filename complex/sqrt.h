// SPDX-License-Identifier: MIT
//
// Principal complex square root.
//
//   m = sqrt(re^2 + im^2),  u = sqrt((m + |re|) / 2),  root = u + i im / (2u), or im / (2u) + i u
//
// in extended precision: nothing cancels, and squares of doubles stay inside the format. The last
// bits are those of _nox_internal_csqrt, whose roots are not always the correctly rounded ones that
// the processor gives several times as fast. So the processor's stand wherever the difference
// cannot reach the result; zeros, infinities and NaNs are settled apart.
//
// How far the two can differ, with e = 2^-63, the largest unit of the last place relative to a
// number. A root of noxsqrtl_scalar is within 0.502 units of the exact one, the processor's within
// 0.5, so the two values of m differ by 1 unit at most, e. Their sums with |re| differ by e and by
// their roundings, half a unit each: 2e. A root halves this and adds its own two roundings: u
// differs by (1 + 0.5 + 0.502)e, about 2.01e, and the quotient by its two roundings more, 3.01e.
// Sums at a distance of 4e to both sides are off by half a unit themselves and still enclose both
// values: a part for which they round to one double, normal or subnormal, is the same by either
// root.
#ifndef LUX_COMPLEX_SQRT_H
#define LUX_COMPLEX_SQRT_H

#include "complex/number.h"

// By the roots of noxsqrtl_scalar: its last bits are the published ones. Squares of doubles cannot
// leave the extended range, so nothing is scaled.
static inline Complex64 _nox_internal_csqrt(const DoubleInMemory& re, const DoubleInMemory& im) {
  const long double x = load_extended(&re), y = load_extended(&im),
                    m = noxsqrtl_scalar(x * x + y * y);
  Complex64 root;
  if (x > 0) {
    const long double u = noxsqrtl_scalar(0.5L * m + 0.5L * x);
    root.re = store_f64(double(u));
    root.im = store_f64(double(0.5L * y / u));
  } else {
    const long double v = noxsqrtl_scalar(0.5L * m - 0.5L * x);
    root.im = store_f64(double(v));
    const long double w = 0.5L * y / v;
    root.re = store_f64(double(w < 0 ? -w : w));
  }
  // A NaN for im fails every comparison, so that it leaves with its sign inverted.
  if (y >= 0 ? root.im < 0 : !(root.im <= 0)) root.im = -root.im;
  return root;
}

__attribute__((noinline, cold)) static Complex64 complex_sqrt_rare(const Complex64& z) {
  const double infinity = __builtin_inf();
  if (_nox_internal_isinf(z.im)) return {infinity, z.im};
  if (_nox_internal_isnan(z.re)) return {z.re + z.im, z.re + z.im};
  if (_nox_internal_ispinf(z.re)) return {z.re, z.im * 0};
  if (_nox_internal_isninf(z.re))
    return {_nox_internal_isnan(z.im) ? z.im + z.im : 0, __builtin_copysign(infinity, z.im)};
  if (_nox_internal_isnan(z.im)) return {z.im + z.im, z.im + z.im};
  if (_nox_internal_iszero(z.re) && _nox_internal_iszero(z.im)) return {0, z.im};
  return _nox_internal_csqrt(z.re, z.im);
}

// Nonzero unless everything within 4e of x rounds to one double, which is stored.
static inline uint32_t store_unless_near_midpoint(double* to, long double x) {
  const long double reach = x * 0x1p-61f;
  double above = double(x + reach), below = double(x - reach);
  asm("" : "+m"(above), "+m"(below));
  const Words a = load_words(&above), b = load_words(&below);
  *to = below;
  return (a.lower ^ b.lower) | (a.upper ^ b.upper);
}

// Inlined, since its call would cost singles a seventh of the time.
__attribute__((always_inline)) static inline Complex64 complex_sqrt(const Complex64& z) {
  const uint32_t re = upper_magnitude(&z.re), im = upper_magnitude(&z.im);
  if (__builtin_expect(re >= 0x7FF00000 || im >= 0x7FF00000 || !(re | im), false))
    return complex_sqrt_rare(z);
  const long double x = load_extended(&z.re), y = load_extended(&z.im);
  const long double m = processor_root(x * x + y * y);
  const long double u = processor_root(0.5f * (m + __builtin_fabsl(x)));
  const bool left = !(x > 0);
  // On the left an im below 0 turns both signs.
  const bool turned = left & (y < 0);
  const long double sign = turned ? -1.0f : 1.0f;
  double parts[2];
  const uint32_t near = store_unless_near_midpoint(&parts[0], u * sign) |
                        store_unless_near_midpoint(&parts[1], 0.5f * y / u * sign);
  if (__builtin_expect(near, false)) return complex_sqrt_rare(z);
  return {parts[left], parts[!left]};
}

#endif
