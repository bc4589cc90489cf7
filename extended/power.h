// SPDX-License-Identifier: MIT
//
// The steps of a power: logarithm to base 2 and 2^t, with 64 bits and with about 120.
//
//   log2 x = e + log2(1/R) + log2(1 + z),  x = 2^e m, i = round(256 (m - 1)), z = m R[i] - 1
//   2^t = 2^n T[j] 2^r,  t = n + j/256 + r
//
// R[0] = 1 and R[256] = 1/2, so that nothing cancels next to 1.
#ifndef LUX_EXTENDED_POWER_H
#define LUX_EXTENDED_POWER_H

#include "extended/generated/exp_table.h"  // _nox_exp_table.power, of 2
#include "extended/generated/power_table.h"
#include "extended/number.h"

static inline long double whole(const DoublePair& pair) {
  return pair.high + (long double)pair.low;
}

// ---- Logarithm to base 2

// x = 2^exponent m of a positive normal number, with the cell of m.
struct Cell {
  int32_t exponent;
  uint32_t index;
};

// Gives m. The processor forwards significand and exponent apart from each other, so m can be
// loaded from the significand that was stored and a new exponent.
static inline long double reduced(long double x, Cell* cell) {
  ExtendedWords words;
  asm("fstpt %0" : "=m"(words) : "t"(x) : "st");
  cell->exponent = words.exponent - 16383;
  cell->index = ((words.upper & 0x7FFFFFFF) + 0x400000) >> 23;
  words.exponent = 16383;
  long double m;
  asm("fldt %1" : "=t"(m) : "m"(words));
  return m;
}

template <int kCount>
static inline long double polynomial(const double (&c)[kCount], long double x) {
  long double value = c[0];
#pragma GCC unroll 8
  for (int i = 1; i < kCount; ++i) value = value * x + c[i];
  return value;
}

// To 2^-63 of 1 or of the logarithm, whichever is larger.
static inline long double log2_short(long double m, Cell place) {
  const PowerTable& table = anew(power_table);
  const auto& cell = table.cell[place.index];
  const long double z = m * cell.reciprocal - 1.0f;
  const long double tail = polynomial(table.c, z) * z + table.c0_low;
  return (tail + table.c0_high) * z + cell.middle + (place.exponent + (long double)cell.high);
}

// ---- The way back

struct ScaledPower {
  long double value;
  int32_t exponent;  // of the factor 2^exponent that is left
};

// 2^(k/256 + r), |r| <= 2^-9: value to 0.51 units of the last place.
static inline ScaledPower exp2_near(int32_t k, long double r) {
  const PowerTable& table = anew(power_table);
  const double* const power = _nox_exp_table.power[k & 255];
  const long double rising = (polynomial(table.e, r) * r + table.e0_low + table.e0_high) * r;
  return {power[0] + (power[1] + ((long double)power[1] + power[0]) * rising), k >> 8};
}

// 2^t, |t| < 2^24.
static inline ScaledPower exp2_parts(long double t) {
  const int32_t k = nearest_integer(t * 256);
  return exp2_near(k, t - k * (1 / 256.0L));
}

// ---- With about 120 bits

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

// Of x, whose difference from 1 comes beside it: where that is small it alone counts. To 2^-115
// of the logarithm.
static inline TwoPart log2_long(const TwoPart& x, const TwoPart& x_minus_1) {
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
  const int32_t k = nearest_integer(t.high * 256);
  return exp2_near(k, (t.high - k * (1 / 256.0L)) + t.low);
}

#endif
