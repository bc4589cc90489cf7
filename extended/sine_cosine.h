// SPDX-License-Identifier: MIT
//
// Sine and cosine in extended precision, inline.
//
//   x = n pi/128 + r, |r| <= pi/256; pi/128 in three parts, the first two of which times n are
//   exact below 2^17. From there on noxreduce_pi04l leaves the rest of a multiple of pi/2.
//   S + s = sin(n pi/128) and C + c = cos(n pi/128) as two doubles each,
//   sin x = S + (s + (S (cos r - 1) + (C + c) sin r)),
//   cos x = C + (c + (C (cos r - 1) - (S + s) sin r)).
//
// Next to a multiple of pi/2 the step is r, which has all its bits: the three parts hold pi/128 to
// 2^-141, and no double below 2^17 is closer than 2^-61 to a multiple.
#ifndef LUX_EXTENDED_SINE_COSINE_H
#define LUX_EXTENDED_SINE_COSINE_H

#include "core/generated/sines_table.h"     // kSines
#include "extended/generated/trig_table.h"  // _nox_degree
#include "extended/number.h"

// Upper words of the magnitudes that the short reduction takes: normal numbers below 2^17. Zeros
// would lose their sign.
constexpr uint32_t kTrigLeast = 0x00100000, kTrigBound = 0x41000000;

static inline bool is_short_angle(const double* x) {
  return upper_magnitude(x) - kTrigLeast < kTrigBound - kTrigLeast;
}

struct SineCosine {
  long double sine, cosine;
};

// Of the angle j pi/128 + r. `tail` is what r does not hold of the step, far below it.
__attribute__((always_inline)) static inline SineCosine sine_cosine_of(const SineTable& table,
                                                                       int32_t j, long double r,
                                                                       long double tail) {
  const double* const S = table.sine[j & 255];
  const double* const C = S + 2 * 64;
  const long double u = r * r;
  const long double series = ((table.s[2] * u + table.s[1]) * u + table.s[0]) * (u * r) + tail;
  const long double step = series + r;
  const long double less = ((table.c[2] * u + table.c[1]) * u + table.c[0]) * u;
  return {S[0] + (S[1] + (S[0] * less + ((long double)C[1] + C[0]) * step)),
          C[0] + (C[1] + (C[0] * less - ((long double)S[1] + S[0]) * step))};
}

// For a double with is_short_angle.
__attribute__((always_inline)) static inline SineCosine short_sine_cosine(long double x) {
  const SineTable& table = anew(kSines);
  const int32_t n = nearest_integer(x * table.inv_step);
  const long double r =
      ((x - n * (long double)table.p1) - n * (long double)table.p2) - n * (long double)table.p3;
  return sine_cosine_of(table, n, r, 0);
}

// Of octant * pi/4 + r[0] + r[1], |r[0]| <= pi/4 or a little more.
static inline SineCosine reduced_sine_cosine(int octant, const long double r[2]) {
  const SineTable& table = anew(kSines);
  const int32_t n = nearest_integer(r[0] * table.inv_step);
  const long double left = (r[0] - n * (long double)table.p1) - n * (long double)table.p2;
  const long double less = r[1] - n * (long double)table.p3;
  const long double step = left + less;
  return sine_cosine_of(table, n + 32 * octant, step, (left - step) + less);
}

__attribute__((noinline, cold)) static SineCosine long_sine_cosine(const double* x) {
  if (in_memory(x) == 0) return {in_memory(x), 1};
  long double r[2];
  const int octant = noxreduce_pi04l(in_memory(x), r);
  return reduced_sine_cosine(octant, r);
}

// Of a finite x: errors below 2.6 units of the last place of 64 bits, relatively.
static inline void sine_cosine(const DoubleInMemory& x, long double* sine, long double* cosine) {
  const SineCosine pair = __builtin_expect(is_short_angle(&x), true)
                              ? short_sine_cosine(load_extended(&x))
                              : long_sine_cosine(&x);
  *sine = pair.sine;
  *cosine = pair.cosine;
}

#endif
