// SPDX-License-Identifier: MIT
//
// MPFR numbers by value, and exact passage of element patterns in and out.
#ifndef LUX_TESTS_MPFR_NUMBER_H
#define LUX_TESTS_MPFR_NUMBER_H

#include <mpfr.h>

#include "tests/support.h"

// A number of fixed precision; an assignment rounds to nearest.
template <int kPrecision>
struct Number {
  mpfr_t value;

  Number() { mpfr_init2(value, kPrecision); }
  Number(double x) : Number() { mpfr_set_d(value, x, MPFR_RNDN); }
  Number(const Number& x) : Number() { mpfr_set(value, x.value, MPFR_RNDN); }
  Number& operator=(const Number& x) {
    mpfr_set(value, x.value, MPFR_RNDN);
    return *this;
  }
  ~Number() { mpfr_clear(value); }

  friend Number operator+(const Number& a, const Number& b) { return with(mpfr_add, a, b); }
  friend Number operator-(const Number& a, const Number& b) { return with(mpfr_sub, a, b); }
  friend Number operator*(const Number& a, const Number& b) { return with(mpfr_mul, a, b); }
  friend Number operator/(const Number& a, const Number& b) { return with(mpfr_div, a, b); }

 private:
  template <class Operation>
  static Number with(Operation operation, const Number& a, const Number& b) {
    Number result;
    operation(result.value, a.value, b.value, MPFR_RNDN);
    return result;
  }
};

using Single = Number<24>;
using Double = Number<53>;
using Extended = Number<64>;

inline void set_exact(mpfr_t to, uint32_t x) {
  float value;
  memcpy(&value, &x, sizeof value);
  mpfr_set_flt(to, value, MPFR_RNDN);
}
inline void set_exact(mpfr_t to, uint64_t x) {
  double value;
  memcpy(&value, &x, sizeof value);
  mpfr_set_d(to, value, MPFR_RNDN);
}
// Rounded once, also to a subnormal.
template <class U>
U stored(const mpfr_t x) {
  if constexpr (sizeof(U) == 4)
    return bits(mpfr_get_flt(x, MPFR_RNDN));
  else
    return bits(mpfr_get_d(x, MPFR_RNDN));
}

template <class To, class From>
To as(const From& x, mpfr_rnd_t direction = MPFR_RNDN) {
  To y;
  mpfr_set(y.value, x.value, direction);
  return y;
}
// An element pattern.
template <class To, class U>
To number(U x) {
  To y;
  set_exact(y.value, x);
  return y;
}
template <class N>
double plain(const N& x) {
  return mpfr_get_d(x.value, MPFR_RNDN);
}

template <class N>
N root(N x) {
  mpfr_sqrt(x.value, x.value, MPFR_RNDN);
  return x;
}
template <class N>
N scaled(N x, int exponent) {
  mpfr_mul_2si(x.value, x.value, exponent, MPFR_RNDN);
  return x;
}

#endif
