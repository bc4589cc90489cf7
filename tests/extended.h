// SPDX-License-Identifier: MIT
//
// Errors of extended-precision results against MPFR, in units of the last place of 64 bits.
#ifndef LUX_TESTS_EXTENDED_H
#define LUX_TESTS_EXTENDED_H

#include <cmath>
#include <vector>

#include "tests/mpfr_number.h"

// MPFR's exponents reach further than the format's, so an exact value is never rounded to a
// subnormal, zero or infinity before it is compared.
constexpr int kExtendedBits = 64, kExtendedLeastExponent = -16381;  // mpfr_get_exp of 2^-16382

// Distance to the exact value in units of the last place that the format has there. A result of
// the wrong class is infinitely far: a NaN, or an infinity where a finite number is nearer.
inline double extended_ulps(long double got, mpfr_srcptr exact) {
  if (mpfr_nan_p(exact) || std::isnan(got))
    return mpfr_nan_p(exact) && std::isnan(got) ? 0 : INFINITY;
  if (std::isinf(got)) {
    Number<kExtendedBits> rounded;
    mpfr_set(rounded.value, exact, MPFR_RNDN);
    const bool overflows = mpfr_inf_p(exact) || mpfr_get_exp(rounded.value) > 16384;
    return overflows && std::signbit(got) == !!mpfr_signbit(exact) ? 0 : INFINITY;
  }
  if (mpfr_inf_p(exact)) return INFINITY;
  if (mpfr_zero_p(exact)) return got == 0 ? 0 : INFINITY;
  Number<256> difference;
  mpfr_set_ld(difference.value, got, MPFR_RNDN);
  mpfr_sub(difference.value, difference.value, exact, MPFR_RNDN);
  const long exponent = std::max<long>(mpfr_get_exp(exact), kExtendedLeastExponent);
  mpfr_mul_2si(difference.value, difference.value, kExtendedBits - exponent, MPFR_RNDN);
  return std::fabs(mpfr_get_d(difference.value, MPFR_RNDN));
}

// A random extended number with its exponent in [least, most], of either sign.
inline long double random_extended(Random& random, int least, int most) {
  const uint64_t significand = random.next() | 0x8000000000000000u;
  const int exponent = least + int(random.next() % uint64_t(most - least + 1));
  const long double magnitude = std::ldexp((long double)(significand), exponent - 63);
  return random.next() & 1 ? -magnitude : magnitude;
}

#endif
