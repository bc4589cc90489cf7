// SPDX-License-Identifier: MIT
//
// Powers to 2^-62 of their value, on the x87 unit at 64-bit precision: every element of the
// doubles' A53, and of the singles those whose result is subnormal or at the edge of the range.
//
//   x = 2^e m, 1 <= m < 2, i = round(512 (m - 1)), z = m R[i] - 1 exactly (R has 11 bits),
//   log2 x = (e + log2(1/R[i])) + c0 z + c1 z^2 + ... + c6 z^7,
//   t = y log2 x, k = round(2^13 t), r = t - k/2^13, |r| <= 2^-14, k = (n 64 + j1) 128 + j0,
//   2^t = 2^n (T + T r (e0 + r (e1 + r e2))), T = T1[j1] T0[j0].
//
//   R[0] = 1 and R[512] = 1/2, so that nothing cancels next to 1. Since t reaches 1075, the
//   logarithm and t need 70 bits:
//
//   z = zh + zl, zh a single; c0 = c0h + c0l, c0h a single: c0h zh is exact;
//   lh = e + L + c0h zh rounded to a single, what it leaves is exact;
//   ll = that + c0h zl + c0l z + c1 z^2 + ...: its roundings are 2^-73 of the logarithm;
//   y = yh + yl, yh its leading 21 bits: yh lh and yl lh are exact, t = yh lh + (yl lh + y ll).
//
//   Errors of the fits: 2^-74 of the logarithm, 2^-64 of the power.
#ifndef LUX_KERNELS_EXPLOG_POW_EXTENDED_H
#define LUX_KERNELS_EXPLOG_POW_EXTENDED_H

#include "kernels/frame.h"
#include "kernels/lanes.h"
#include "kernels/explog/generated/pow_64f_table.h"  // extended_table
#include "kernels/two_parts.h"

using ExtendedTable = decltype(extended_table);

// The table by a pointer that the compiler takes for a new one at each element. It would load
// constants once for several elements and spill them as extended numbers, at the price of four
// operations each.
static inline const ExtendedTable& table_anew() {
  const ExtendedTable* table = &extended_table;
  asm volatile("" : "+r"(table));
  return *table;
}

// ---- Logarithm of 2^e m; `upper` is a word with the fraction of m's upper word

static inline const auto& cell_of(const ExtendedTable& table, uint32_t upper) {
  return table.cell[((upper & Upper<double>::kFraction) + 0x400) >> 11];
}

// c2 z + ... + c6 z^5
static inline long double upper_terms(const ExtendedTable& table, long double z) {
  const auto& c = table.c;
  return ((((c[0] * z + c[1]) * z + c[2]) * z + c[3]) * z + c[4]) * z;
}

struct Log {
  float high;
  long double low;
};

static inline Log log2_long(const double* m, uint32_t upper, int32_t e) {
  const ExtendedTable& table = table_anew();
  const auto& cell = cell_of(table, upper);
  const long double z = (long double)*m * cell.reciprocal - 1.0f;
  float z_high, high;
  put_copy(&z_high, z);
  const long double head = (long double)z_high * table.c0_high, whole = e + (long double)cell.high;
  put(&high, whole + head);
  const long double left = ((whole - high) + head) + (z - z_high) * table.c0_high;
  const long double low =
      ((upper_terms(table, z) + table.c1_high + table.c1_low) * z + table.c0_low) * z + cell.low;
  return {high, left + low};
}

// ---- Product and power

// k as the low word of a double, t = k/8192 + r.
struct GridPoint {
  double grid, r;
};

static inline void put_grid(double* to, long double t) { put(to, t + extended_table.shifter); }
static inline long double grid_point(const double* grid) {
  return *grid - (long double)extended_table.shifter;
}

static inline void product(const Log& log, long double y, long double y_high, long double y_low,
                           GridPoint* t) {
  const long double high = y_high * log.high, low = y_low * log.high + y * log.low;
  put_grid(&t->grid, high + low);
  put(&t->r, (high - grid_point(&t->grid)) + low);
}

struct ScaledPower {
  long double value;  // to be multiplied by 2^floor(k/8192)
  int32_t k;
};

template <bool kLong>
static inline ScaledPower exp2_of(const GridPoint& t) {
  const ExtendedTable& table = table_anew();
  const int32_t k = int32_t(load_words(&t.grid).lower);
  const long double power =
      value_of<kLong>(table.coarse[k >> 7 & 63]) * value_of<kLong>(table.fine[k & 127]);
  return {((table.e[0] * t.r + table.e[1]) * t.r + table.e[2]) * t.r * power + power, k};
}

// ---- Any finite operands

static const BitLanes kFractions = {{~0u, Upper<double>::kFraction, ~0u, Upper<double>::kFraction}};
static const BitLanes kOnes = {{0, Upper<double>::kOne, 0, Upper<double>::kOne}};
static const BitLanes kUpperWords = {{0, ~0u, 0, ~0u}};

// Of a magnitude's upper word.
static inline int32_t exponent_of(uint32_t upper) { return int32_t(upper >> 20) - 1023; }

// 2^n for |n| <= 1022, stored as a whole: a load of two words stored one by one would wait.
static inline double stored_power_of_two(int32_t n) {
  float upper;
  double power;
  store_bits(&upper, uint32_t(n + 1023) << 20);
  store_half(&power, _mm_unpacklo_ps(_mm_setzero_ps(), load_lane(&upper)));
  return power;
}

// The power of the magnitude of a finite base other than 0, and a finite exponent, kept within the
// extended range.
static inline long double extended_pow(const double* x, const double* y) {
  double lifted, m, y_high;
  int32_t e = 0;
  if (upper_magnitude(x) < Upper<double>::kSmallestNormal) {
    put(&lifted, load_extended(x) * 0x1p+64f);
    x = &lifted;
    e = -64;
  }
  const uint32_t upper = upper_magnitude(x);
  store_half(&m, _mm_or_ps(_mm_and_ps(load_half(x), lanes_of(kFractions)), lanes_of(kOnes)));
  store_half(&y_high, _mm_and_ps(load_half(y), lanes_of(kUpperWords)));
  const Log log = log2_long(&m, upper, e + exponent_of(upper));
  const long double about = (long double)log.high * in_memory(y);
  if (about > 1500.0f) return power_of_two(1500);
  if (about < -1500.0f) return power_of_two(-1500);
  if (__builtin_fabsl(about) < 0x1p-70f) return 1;  // r as a double might underflow
  GridPoint t;
  product(log, in_memory(y), y_high, (long double)in_memory(y) - y_high, &t);
  const ScaledPower power = exp2_of<true>(t);
  const int32_t n = power.k >> 13, some = n >> 1;
  return power.value * stored_power_of_two(some) * stored_power_of_two(n - some);
}

#endif
