// SPDX-License-Identifier: MIT
//
// Logarithms of one extended number, and the inverse hyperbolic tangent, which is one of them:
//
//   atanh x = log(1 + 2x / (1-x)) / 2
//
// by the method of logarithm.h, with r and the sum of the largest terms exact and the quotient in
// two parts. Worst errors found (sampled): log 0.5214, log1p 0.5320, atanh 0.5175 ulp.
#include "extended/logarithm.h"

constexpr uint16_t kSignBit = 0x8000;

// x > 0, finite, also subnormal.
static long double log_positive(long double x) {
  const Significand parts = significand_of(x);
  const LogPlace place = log_place(store_f32(float(parts.m)));
  return careful_log_sum({parts.m * place.scale - 1, 0}, *place.cell,
                         place.exponent + parts.exponent);
}

// log(1 + x), -1 < x.
static long double log1p_finite(const TwoPart& x) {
  const long double sum = 1 + x.high;
  if (!is_moderate(sum)) return log_positive(sum);
  const LogPlace place = log_place(store_f32(float(sum)));
  const long double scale = place.scale;
  const TwoPart f = exact_sum(x.high * scale, scale - 1);
  return careful_log_sum({f.high, f.low + x.low * scale}, *place.cell, place.exponent);
}

long double noxlogl_scalar(long double x) {
  const ExtendedParts parts = parts_of(x);
  if (parts.is_nan()) return x + x;
  if (x == 0) return -1 / __builtin_fabsl(x);
  if (parts.exponent & kSignBit) return invalid(x);
  if (parts.is_special()) return x;
  return log_positive(x);
}

// Below 2^-66 in magnitude x^2/2 is less than a quarter of a unit.
long double noxlog1pl_scalar(long double x) {
  const ExtendedParts parts = parts_of(x);
  if (parts.is_nan()) return x + x;
  if (x < -1) return invalid(x);
  if (x == -1) return -1 / (1 + x);
  if (parts.is_special()) return x;
  if (__builtin_fabsl(x) < 0x1p-66L) return x;
  return log1p_finite({x, 0});
}

long double noxatanhl_scalar(long double x) {
  const ExtendedParts parts = parts_of(x);
  const long double a = __builtin_fabsl(x);
  if (parts.is_nan()) return x + x;
  if (a > 1) return invalid(x);
  if (a == 1) return x / (1 - a);
  if (a < 0x1p-33L) return x;
  const TwoPart below = ordered_sum(1, -a), doubled = {2 * a, 0};
  const long double half = 0.5L * log1p_finite(doubled / below);
  return x < 0 ? -half : half;
}
