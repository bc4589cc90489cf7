// SPDX-License-Identifier: MIT
//
// Classes of doubles, and small steps that the complex functions share.
#ifndef LUX_COMPLEX_NUMBER_H
#define LUX_COMPLEX_NUMBER_H

#include "extended/number.h"

// ---- Classes of doubles, by bits alone: no exception, and no passage through the x87 unit, hence
// the references. Each gives 1 or 0.

static inline int _nox_internal_isinf(const double& x) {
  const Words w = load_words(&x);
  return (w.upper & ~kSignUpper) == 0x7FF00000 && w.lower == 0;
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
  return (w.upper & ~kSignUpper) == 0 && w.lower == 0;
}

static inline int _nox_internal_isnegzero(const double& x) {
  const Words w = load_words(&x);
  return w.upper == 0x80000000 && w.lower == 0;
}

static inline int _nox_internal_isnzfinite(const double& x) {
  const Words w = load_words(&x);
  return (w.upper & 0x7FF00000) != 0x7FF00000 && ((w.upper & ~kSignUpper) || w.lower);
}

static inline bool is_finite(const double& x) {
  return !(_nox_internal_isinf(x) || _nox_internal_isnan(x));
}

// 1 or -1, the sign of a number.
static inline float sign_of(const double& x) {
  static const float signs[2] = {1, -1};
  return signs[upper_word(&x) >> 31];
}

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

#endif
