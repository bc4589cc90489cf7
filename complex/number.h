// SPDX-License-Identifier: MIT
//
// Classes of doubles, and small steps that the complex functions share.
#ifndef LUX_COMPLEX_NUMBER_H
#define LUX_COMPLEX_NUMBER_H

#include "extended/number.h"

// Complex numbers that may be elements of a caller's arrays, at any byte address.
struct Complex32 {
  FloatInMemory re, im;
};

struct Complex64 {
  DoubleInMemory re, im;
};

static inline const Complex32& in_memory(const Lux32fc* z) {
  return *reinterpret_cast<const Complex32*>(z);
}
static inline const Complex64& in_memory(const Lux64fc* z) {
  return *reinterpret_cast<const Complex64*>(z);
}
static inline Complex32& in_memory(Lux32fc* z) { return *reinterpret_cast<Complex32*>(z); }
static inline Complex64& in_memory(Lux64fc* z) { return *reinterpret_cast<Complex64*>(z); }

// ---- Classes of doubles, by bits alone: no exception, and no passage through the x87 unit, hence
// the references. Each gives 1 or 0.

static inline int _nox_internal_isinf(const DoubleInMemory& x) {
  const Words w = load_words(&x);
  return (w.upper & ~kSignUpper) == 0x7FF00000 && w.lower == 0;
}

static inline int _nox_internal_isninf(const DoubleInMemory& x) {
  const Words w = load_words(&x);
  return w.upper == 0xFFF00000 && w.lower == 0;
}

static inline int _nox_internal_ispinf(const DoubleInMemory& x) {
  const Words w = load_words(&x);
  return w.upper == 0x7FF00000 && w.lower == 0;
}

static inline int _nox_internal_isnan(const DoubleInMemory& x) {
  const Words w = load_words(&x);
  return (w.upper & 0x7FF00000) == 0x7FF00000 && ((w.upper & 0x000FFFFF) || w.lower);
}

static inline int _nox_internal_iszero(const DoubleInMemory& x) {
  const Words w = load_words(&x);
  return (w.upper & ~kSignUpper) == 0 && w.lower == 0;
}

static inline int _nox_internal_isnegzero(const DoubleInMemory& x) {
  const Words w = load_words(&x);
  return w.upper == 0x80000000 && w.lower == 0;
}

static inline int _nox_internal_isnzfinite(const DoubleInMemory& x) {
  const Words w = load_words(&x);
  return (w.upper & 0x7FF00000) != 0x7FF00000 && ((w.upper & ~kSignUpper) || w.lower);
}

static inline bool is_finite(const DoubleInMemory& x) {
  return !(_nox_internal_isinf(x) || _nox_internal_isnan(x));
}

// 1 or -1, the sign of a number.
static inline float sign_of(const DoubleInMemory& x) {
  static const float signs[2] = {1, -1};
  return signs[upper_word(&x) >> 31];
}

static inline Complex64 rounded(long double re, long double im) {
  return {store_f64(double(re)), store_f64(double(im))};
}

// Arguments go by reference and become extended numbers in their load: a subnormal double that is
// stored again, as the compiler does with copies, traps where the caller has underflow unmasked.

// A NaN for infinities and NaNs, and invalid for infinities.
static inline double minus_itself(const DoubleInMemory& x) {
  const long double value = load_extended(&x);
  return double(value - value);
}

// i z, and back again: f(z) = turned_back(g(turned(z))) for a trigonometric f with partner g. A
// NaN keeps its sign.
static inline Complex64 turned(const Complex64& z) {
  Words re = load_words(&z.im);
  if (!_nox_internal_isnan(z.im)) re.upper ^= kSignUpper;
  Complex64 w;
  store_words(&w.re, re);
  store_words(&w.im, load_words(&z.re));
  return w;
}

static inline Complex64 turned_back(const Complex64& w) { return {w.im, -w.re}; }

#endif
