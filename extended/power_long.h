// SPDX-License-Identifier: MIT
//
// Logarithm to base 2 with about 120 bits, by the cells of power.h, and 2 to such a number.
#ifndef LUX_EXTENDED_POWER_LONG_H
#define LUX_EXTENDED_POWER_LONG_H

#include "extended/power.h"

// z - z^2/2 + z^3/3 - ... to z^14, |z| < 0.0022: the terms from z^7 on with 64 bits.
static inline TwoPart log1p_series(const TwoPart& z) {
  const TwoPart* const inverse = power_table.inverse;
  const long double x = z.high;
  long double rest = -1.0L / 14;
#pragma GCC unroll 8
  for (int k = 13; k >= 7; --k) rest = rest * x + (k % 2 ? 1.0L : -1.0L) / k;
  TwoPart sum = z * rest;
  for (int k = 6; k >= 1; --k) {
    sum = ordered_sum(k % 2 ? inverse[k] : -inverse[k], sum) * z;
  }
  return sum;
}

// Of x, whose difference from 1 is given beside it: where that is small it alone counts. To 2^-115
// of the logarithm.
static TwoPart log2_long(const TwoPart& x, const TwoPart& x_minus_1) {
  Cell place;
  const long double m = reduced(x.high, &place);
  const auto& cell = power_table.cell[place.index];
  TwoPart z = x_minus_1;
  if (cell.reciprocal != (place.exponent == 0 ? 1.0 : 0.5) || uint32_t(place.exponent + 1) > 1) {
    const TwoPart product = exact_product(m, cell.reciprocal);
    // 2^-16383 would be a subnormal number.
    const long double low =
        x.low == 0 ? 0 : x.low * power_of_two(-place.exponent) * cell.reciprocal;
    z = TwoPart{product.high - 1, product.low} + TwoPart{low, 0};
  }
  const TwoPart small = ordered_sum(cell.middle, cell.low) + log1p_series(z) * power_table.log2_e;
  return TwoPart{place.exponent + (long double)cell.high, 0} + small;
}

// |t| < 2^24.
static inline ScaledPower exp2_parts(const TwoPart& t) {
  const int32_t k = rounded(t.high * 256);
  return exp2_near(k, (t.high - k * (1 / 256.0L)) + t.low);
}

#endif
