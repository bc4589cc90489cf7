// SPDX-License-Identifier: MIT
//
// Powers with a whole exponent from -4 to 4, but 0, by products in extended precision, z = a + ib:
//
//   z^2 = (a - b)(a + b) + 2iab
//   z^3 = a (a^2 - 3b^2) + ib (3a^2 - b^2)
//   z^4 = (A - B)(A + B) + 2iAB,  z^2 = A + iB
//   z^-n = conj(z^n) / |z|^2n
//
// Nothing leaves the format. a - b and a + b have errors of half a unit; where one of the other
// differences loses more than seven bits it is computed anew from exact products. So each part is
// within 2^-55 of its exact value before it is rounded. An exact zero has the sign that the power in
// polar form gives it: the real part's is positive, the imaginary part's follows that of the angle.
#ifndef LUX_COMPLEX_WHOLE_POWER_H
#define LUX_COMPLEX_WHOLE_POWER_H

#include "complex/number.h"
#include "extended/two_part.h"

// The magnitude of a whole exponent from -4 to 4, otherwise 0.
static inline int32_t whole_exponent(const Complex64& w) {
  const Words re = load_words(&w.re);
  if (re.lower || !_nox_internal_iszero(w.im)) return 0;
  switch (re.upper & ~kSignUpper) {
    case 0x3FF00000:
      return 1;
    case 0x40000000:
      return 2;
    case 0x40080000:
      return 3;
    case 0x40100000:
      return 4;
  }
  return 0;
}

// Neither 0 nor infinite nor a NaN.
static inline bool is_finite_number(const Complex64& z) {
  const Words x = load_words(&z.re), y = load_words(&z.im);
  const uint32_t a = x.upper & ~kSignUpper, b = y.upper & ~kSignUpper;
  return (a < 0x7FF00000) & (b < 0x7FF00000) & ((a | b | x.lower | y.lower) != 0);
}

struct ExtendedPoint {
  long double re, im;
};

static inline bool is_cancelled(long double difference, long double term) {
  return __builtin_fabsl(difference) < __builtin_fabsl(term) * 0x1p-7f;
}

// x^2 k - y^2 m. Doubles whose squares cancel have nearly the same exponent, so that all parts are
// multiples of one unit, and exact.
static inline long double exact_difference(long double x, float k, long double y, float m) {
  const TwoPart sum = exact_product(x, x) * k + -(exact_product(y, y) * m);
  return sum.high + sum.low;
}

// a^2 - b^2 + 2ab sign, exactly where it cancels.
static inline long double exact_mixture(long double a, long double b, float sign) {
  const TwoPart sum =
      (exact_product(a, a) + -exact_product(b, b)) + exact_product(a, b) * (2 * sign);
  return sum.high + sum.low;
}

__attribute__((noinline, cold)) static ExtendedPoint careful_power(long double a, long double b,
                                                                   int32_t n) {
  if (n == 3) return {a * exact_difference(a, 1, b, 3), b * exact_difference(a, 3, b, 1)};
  const long double re = (a - b) * (a + b), im = 2 * a * b;
  return {exact_mixture(a, b, -1) * exact_mixture(a, b, 1), 2 * re * im};
}

__attribute__((always_inline)) static inline ExtendedPoint positive_power(long double a,
                                                                          long double b,
                                                                          int32_t n) {
  if (n == 3) {
    const long double aa = a * a, bb = b * b, p = aa - 3.0f * bb, q = 3.0f * aa - bb;
    if (__builtin_expect(is_cancelled(p, aa) | is_cancelled(q, bb), false))
      return careful_power(a, b, n);
    return {a * p, b * q};
  }
  const long double re = (a - b) * (a + b), im = 2.0f * a * b;
  if (n == 2) return {re, im};
  const long double less = re - im, more = re + im;
  if (__builtin_expect(is_cancelled(less, im) | is_cancelled(more, im), false))
    return careful_power(a, b, n);
  return {less * more, 2.0f * re * im};
}

static inline Complex64 whole_power(const Complex64& z, int32_t n, bool inverse) {
  const long double a = load_extended(&z.re), b = load_extended(&z.im);
  ExtendedPoint power = n == 1 ? ExtendedPoint{a, b} : positive_power(a, b, n);
  if (n == 1 && !inverse) return rounded(a, b);
  if (inverse) {
    const long double norm = a * a + b * b;
    long double size = norm;
    for (int32_t k = 1; k < n; ++k) size *= norm;
    power = {power.re / size, -power.im / size};
  }
  if (power.re == 0) power.re = 0;
  if (power.im == 0) power.im = (upper_word(&z.im) >> 31) != inverse ? -0.0f : 0.0f;
  return rounded(power.re, power.im);
}

#endif
