// SPDX-License-Identifier: MIT
//
// Exponential and hyperbolic functions of one extended number: the inline cores with all special
// cases. From 11600 on results overflow or vanish.
//
//   sinh   below 1/16 the odd Taylor series to x^11, which keeps the last bits
//   tanh   the quotient of the unrounded sinh and cosh below 24, +-1 from there on
//
// Worst errors found, in units of the last place (sampled against 160 bits): e^x 0.534, sinh 0.528,
// cosh 0.528, tanh 0.521.
#include "extended/exponential.h"
#include "extended/two_part.h"

constexpr float kOutside = 11600, kSeries = 0x1p-4f, kTanhOne = 24;

long double noxexpl_scalar(long double x) {
  const ExtendedParts parts = parts_of(x);
  if (parts.is_special()) return parts.is_nan() || x > 0 ? x + x : 0;
  if (is_below(x, -70)) return 1 + x;
  if (__builtin_fabsl(x) >= kOutside) return x > 0 ? overflow() : underflow();
  const Exponential e = exp_parts(x);
  return scaled_extended(e.fraction, e.exponent);
}

// sinh x - x
static long double sinh_series(long double x) {
  const long double u = x * x;
  return ((((u * (1 / 39916800.0L) + 1 / 362880.0L) * u + 1 / 5040.0L) * u + 1 / 120.0L) * u +
          1 / 6.0L) *
         (u * x);
}

static inline HyperbolicAddends careful_addends(long double x) {
  const Reduced reduced = exp_reduced(x, exp_steps(x));
  return hyperbolic_addends<true>(reduced, inverse_square(reduced.n));
}

void noxsinhcoshl_scalar(long double x, long double* sine, long double* cosine) {
  const long double a = __builtin_fabsl(x);
  if (parts_of(x).is_special()) {
    *sine = x + x;
    *cosine = a + a;
  } else if (is_tiny(x)) {
    *sine = x;
    *cosine = 1;
  } else if (a >= kOutside) {
    *cosine = overflow();
    *sine = x < 0 ? -*cosine : *cosine;
  } else {
    const HyperbolicAddends h = careful_addends(a);
    *cosine = scaled_extended(h.cosine + h.cosine_tail, h.exponent);
    if (a < kSeries) {
      *sine = sinh_series(x) + x;
    } else {
      const long double size = scaled_extended(h.sine + h.sine_tail, h.exponent);
      *sine = x < 0 ? -size : size;
    }
  }
}

long double noxsinhl_scalar(long double x) {
  long double sine, cosine;
  noxsinhcoshl_scalar(x, &sine, &cosine);
  return sine;
}

long double noxcoshl_scalar(long double x) {
  long double sine, cosine;
  noxsinhcoshl_scalar(x, &sine, &cosine);
  return cosine;
}

long double noxtanhl_scalar(long double x) {
  if (parts_of(x).is_nan()) return x + x;
  if (is_tiny(x)) return x;
  const long double a = __builtin_fabsl(x);
  if (a >= kTanhOne) return x < 0 ? -1 : 1;
  const HyperbolicAddends h = careful_addends(a);
  // Both are halved, or neither.
  const TwoPart sine =
      a < kSeries ? ordered_sum(2 * a, 2 * sinh_series(a)) : ordered_sum(h.sine, h.sine_tail);
  const long double size = rounded_quotient(sine, ordered_sum(h.cosine, h.cosine_tail));
  return x < 0 ? -size : size;
}
