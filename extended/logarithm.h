// SPDX-License-Identifier: MIT
//
// Logarithm in extended precision, for the complex functions and the scalar routines.
//
//   x = 2^e m, m of 0.707 to 1.418, c near 1/m with ten bits after the point, from the cell of m,
//   r = c m - 1, |r| < 2^-8.7,
//   log x = e log 2 + log(1/c) + log(1 + r), the last by a polynomial.
//
// Beside 1, e = 0 and c = 1, so that nothing cancels: the relative error is that of a sum whose
// terms are at most as large as the result. r is c (m - 1) + (c - 1), m - 1 being exact; one
// product rounds, which the careful form avoids by halving m - 1.
//
// log_far and log1p_core: relative error at most 1.2 * 2^-63 (sampled). They want
// 64-bit precision and rounding to nearest.
#ifndef LUX_EXTENDED_LOGARITHM_H
#define LUX_EXTENDED_LOGARITHM_H

#include "extended/generated/log_table.h"  // kLog
#include "extended/number.h"
#include "extended/two_part.h"

// Where a positive number stands: its cell, and the power of two that brings it there.
struct LogPlace {
  const LogCell* cell;
  int32_t exponent;
  float scale;  // 2^-exponent
};

// 2^-126 <= x < 2^126, as a float: only the cell depends on it.
__attribute__((always_inline)) static inline LogPlace log_place(float x) {
  constexpr uint32_t kHalfCell = 1u << 14, kFirst = 107u << 15, kOne = 0x3F800000;
  WordInMemory word;
  __builtin_memcpy(&word, &x, sizeof word);
  const int32_t k = int32_t(word + kHalfCell - kFirst - kOne + 0x00800000);
  LogPlace place;
  place.cell = kLog.cell + (k >> 15 & 255);
  place.exponent = k >> 23;
  const uint32_t scale = kOne - (uint32_t(k) & 0xFF800000);
  __builtin_memcpy(&place.scale, &scale, sizeof scale);
  return place;
}

// log((1 + f) 2^exponent), 1 + f in the cell.
__attribute__((always_inline)) static inline long double log_sum(long double f, const LogCell& cell,
                                                                 int32_t exponent) {
  const long double r = f * cell.c + cell.c1, w = r * r;
  const ExtendedLog& table = anew(kLog);
  const double* const s = table.series;
  const long double series = (s[0] + s[1] * r) + w * ((s[2] + s[3] * r) + w * s[4]);
  const long double high = exponent * (long double)table.two_high + cell.high;
  const long double low = exponent * (long double)table.two_low + cell.low;
  return high + (r + (low + w * (series * r - 0.5f)));
}

// A positive number near neither 0 nor the end of the range.
static inline bool is_moderate(long double x) { return x > 0x1p-120f && x < 0x1p120f; }

__attribute__((noinline, cold)) static long double log_far(long double x) {
  const Significand parts = significand_of(x);
  const LogPlace place = log_place(store_f32(float(parts.m)));
  return log_sum(parts.m * place.scale - 1, *place.cell, place.exponent + parts.exponent);
}

// log(1 + x) from the place of 1 + x.
__attribute__((always_inline)) static inline long double log1p_near(long double x,
                                                                    const LogPlace& place) {
  return log_sum(x * place.scale + ((long double)place.scale - 1.0f), *place.cell, place.exponent);
}

// The same for x > -1, finite.
__attribute__((always_inline)) static inline long double log1p_core(long double x) {
  const long double sum = 1.0f + x;
  if (__builtin_expect(!is_moderate(sum), false)) return log_far(sum);  // x is the sum
  return log1p_near(x, log_place(store_f32(float(sum))));
}

// ---- With the last bits

// log((1 + f) 2^exponent), 1 + f in the cell: log_sum with less rounding. The head of f has 32
// bits after the point, c and c - 1 have ten.
static inline long double careful_log_sum(const TwoPart& f, const LogCell& cell, int32_t exponent) {
  const long double head = (f.high + 0x1.8p31L) - 0x1.8p31L;
  const TwoPart exact = exact_sum(head * cell.c + cell.c1, (f.high - head) * cell.c);
  const long double r = exact.high, w = r * r, rest = exact.low + f.low * cell.c;
  const double* const s = kLog.series;
  const long double series = (s[0] + s[1] * r) + w * ((s[2] + s[3] * r) + w * s[4]);
  const long double high = exponent * (long double)kLog.two_high + cell.high;
  const long double low = exponent * (long double)kLog.two_low + cell.low;
  const TwoPart sum = ordered_sum(high, r);  // high is 0 or larger than r
  return sum.high + (sum.low + (low + (rest + w * (series * r - 0.5f))));
}

#endif
