// SPDX-License-Identifier: MIT
//
// What the complex and the extended functions share and nobody else sees.
#ifndef LUX_EXTENDED_INTERNAL_H
#define LUX_EXTENDED_INTERNAL_H

#include "core/bits.h"
#include "luxvmk3_scalar.h"

// ---- Classes of doubles, by bits alone: no exception, and no passage through the x87 unit, hence
// the references. Each gives 1 or 0.

static inline int _nox_internal_isinf(const double& x) {
  const Words w = load_words(&x);
  return (w.upper & 0x7FFFFFFF) == 0x7FF00000 && w.lower == 0;
}

static inline int _nox_internal_isninf(const double& x) {
  const Words w = load_words(&x);
  return w.upper == 0xFFF00000 && w.lower == 0;
}

static inline int _nox_internal_ispinf(const double& x) {
  const Words w = load_words(&x);
  return w.upper == 0x7FF00000 && w.lower == 0;
}

static inline int _nox_internal_isnan(const double& x) {
  const Words w = load_words(&x);
  return (w.upper & 0x7FF00000) == 0x7FF00000 && ((w.upper & 0x000FFFFF) || w.lower);
}

static inline int _nox_internal_iszero(const double& x) {
  const Words w = load_words(&x);
  return (w.upper & 0x7FFFFFFF) == 0 && w.lower == 0;
}

static inline int _nox_internal_isnegzero(const double& x) {
  const Words w = load_words(&x);
  return w.upper == 0x80000000 && w.lower == 0;
}

static inline int _nox_internal_isnzfinite(const double& x) {
  const Words w = load_words(&x);
  return (w.upper & 0x7FF00000) != 0x7FF00000 && ((w.upper & 0x7FFFFFFF) || w.lower);
}

static inline bool is_finite(const double& x) {
  return !(_nox_internal_isinf(x) || _nox_internal_isnan(x));
}

// ---- Small steps that the complex functions have in common.

static inline Lux64fc rounded(long double re, long double im) {
  return {store_f64(double(re)), store_f64(double(im))};
}

// Arguments go by reference and become extended numbers in their load: a subnormal double that is
// stored again, as the compiler does with copies, traps where the caller has underflow unmasked.

// A NaN for infinities and NaNs, and invalid for infinities.
static inline double minus_itself(const double& x) {
  const long double value = load_extended(&x);
  return double(value - value);
}

// i z, and back again: f(z) = turned_back(g(turned(z))) for a trigonometric f with partner g. A
// NaN keeps its sign.
static inline Lux64fc turned(const Lux64fc& z) {
  Words re = load_words(&z.im);
  if (!_nox_internal_isnan(z.im)) re.upper ^= kSignUpper;
  Lux64fc w;
  store_words(&w.re, re);
  store_words(&w.im, load_words(&z.re));
  return w;
}

static inline Lux64fc turned_back(const Lux64fc& w) { return {w.im, -w.re}; }

// ---- Square roots. They need 64-bit precision and rounding to nearest, which they do not set.

// Correctly rounded, by the processor.
static inline long double processor_root(long double x) {
  asm("fsqrt" : "+t"(x));
  return x;
}

// 1 / sqrt(*x) of a positive finite number. A very small or large *x comes back scaled, as its
// caller expects.
extern "C" long double __invsqrtl(long double* x);

// Principal square root of re + i im. Squares of doubles cannot leave the extended range, so
// nothing is scaled. At re <= 0 with im = 0 the caller treats zeros and the sign of the cut.
static inline Lux64fc _nox_internal_csqrt(const double& re, const double& im) {
  const long double x = load_extended(&re), y = load_extended(&im),
                    m = noxsqrtl_scalar(x * x + y * y);
  Lux64fc root;
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
  // Deliberate order of the tests: a NaN leaves with its sign inverted when im is a NaN.
  if (y >= 0 ? root.im < 0 : !(root.im <= 0)) root.im = -root.im;
  return root;
}

#endif
