// SPDX-License-Identifier: MIT
//
// Sine and cosine in extended precision, inline.
//
//   x = n pi/128 + r, |r| <= pi/256; pi/128 in three parts, the first two of which times n are
//   exact below 2^17. From there on the rest of a multiple of pi/2 comes from integer products.
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
#include "extended/two_part.h"

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
  const auto& S = table.sine[j & 255];
  const auto& C = table.sine[(j & 255) + 64];
  const long double u = r * r;
  const long double series = ((table.s[2] * u + table.s[1]) * u + table.s[0]) * (u * r) + tail;
  const long double step = series + r;
  const long double less = ((table.c[2] * u + table.c[1]) * u + table.c[0]) * u;
  const auto &S2 = anew(S), &C2 = anew(C);
  return {S[0] + (S[1] + (S[0] * less + ((long double)C[1] + C[0]) * step)),
          C2[0] + (C2[1] + (C2[0] * less - ((long double)S2[1] + S2[0]) * step))};
}

static inline int32_t sine_steps(long double x) {
  return nearest_integer(x * anew(kSines).inv_step);
}

static inline Reduced sine_reduced(long double x, int32_t n) {
  return {n, (long double)n, x - n * (long double)anew(kSines).p1};
}

// For a double with is_short_angle.
__attribute__((always_inline)) static inline SineCosine sine_cosine_near(Reduced x) {
  const SineTable& table = anew(kSines);
  const long double r =
      (x.rest - x.steps * (long double)table.p2) - x.steps * (long double)table.p3;
  return sine_cosine_of(table, x.n, r, 0);
}

__attribute__((always_inline)) static inline SineCosine short_sine_cosine(long double x) {
  return sine_cosine_near(sine_reduced(x, sine_steps(x)));
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

// to += x y modulo 2^160
static inline void add_product(uint32_t (&to)[5], uint32_t x, const uint32_t* y) {
  uint32_t carry = 0;
#pragma GCC unroll 5
  for (int i = 0; i < 5; ++i) {
    const uint64_t sum = uint64_t(x) * y[i] + to[i] + carry;
    to[i] = uint32_t(sum);
    carry = uint32_t(sum >> 32);
  }
}

// A double from 2^17 on less a multiple of pi/2, whose quadrant is returned: noxreduce_pi04l with no
// more words than a double needs, whose fraction of a turn has at most 64 zeros behind the point.
// x / (2 pi) = m 2^shift W without its whole turns, m of 53 bits, W the words of 2/pi behind those
// that contribute whole turns: 160 bits of it, as one signed number in three.
static inline int reduce_double(const double* x, long double r[2]) {
  const Words bits = load_words(x);
  const int32_t exponent = int32_t(bits.upper >> 20 & 0x7FF) - 1075;
  const int32_t first = (exponent - 2) >> 5, shift = (exponent - 2) & 31;
  const uint64_t m = uint64_t((bits.upper & 0xFFFFF) | 0x100000) << 32 | bits.lower;
  const uint64_t low = uint64_t(uint32_t(m)) << shift, high = (m >> 32) << shift;
  const uint64_t upper = high + (low >> 32);
  uint32_t words[7], turns[5] = {};  // the least significant first
  for (int i = 0; i < 7; ++i) {
    const int32_t at = first + 6 - i;
    words[i] = at < 0 ? 0 : _nox_inverse_half_pi[at];
  }
  add_product(turns, uint32_t(low), words + 2);
  add_product(turns, uint32_t(upper), words + 1);
  add_product(turns, uint32_t(upper >> 32), words);

  const uint32_t quadrant = (turns[4] + 0x20000000u) >> 30;
  uint64_t head = uint64_t(turns[4] - (quadrant << 30)) << 32 | turns[3];
  const uint64_t middle = uint64_t(turns[2]) << 32 | turns[1];
  head += middle >> 63;  // it is signed
  const TwoPart sum =
      ordered_sum((long double)int64_t(head) * 0x1p-64f, (long double)int64_t(middle) * 0x1p-128f);
  const long double tail = sum.low + turns[0] * 0x1p-126f * 0x1p-34f;
  constexpr long double kTurn = 0xc90fdaa22168c235p-61L, kTurnTail = -0x3.b399d747f23e32edp-65L;
  const TwoPart product = exact_product(sum.high, kTurn);
  const bool negative = bits.upper >> 31;
  const TwoPart angle =
      ordered_sum(product.high, product.low + (sum.high * kTurnTail + tail * kTurn));
  r[0] = negative ? -angle.high : angle.high;
  r[1] = negative ? -angle.low : angle.low;
  return int((negative ? 0 - quadrant : quadrant) & 3);
}

__attribute__((noinline, cold)) static SineCosine long_sine_cosine(const double* x) {
  if (in_memory(x) == 0) return {in_memory(x), 1};
  long double r[2] = {in_memory(x), 0};
  int quadrant = 0;
  if (upper_magnitude(x) >= kTrigBound) quadrant = reduce_double(x, r);
  return reduced_sine_cosine(2 * quadrant, r);
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
