// SPDX-License-Identifier: MIT
//
// e^x, sinh and cosh in extended precision, inline, without special cases.
//
//   x = n ln2/256 + r, |r| <= ln2/512, ln2/256 in two parts, the first of which times n is exact,
//   n = 256 k + j, T + t = 2^(j/256) as two doubles,
//   e^x = (T + (t + (T + t) (e^r - 1))) 2^k.
//
// sinh and cosh take e^r - 1 and e^-r - 1 from one odd and one even polynomial, and e^-x from the
// table at -n. The upper parts of e^x - e^-x are subtracted exactly where x is small, and at n = 0
// they vanish: so sinh keeps its relative accuracy down to 0 without a path of its own.
#ifndef LUX_EXTENDED_EXPONENTIAL_H
#define LUX_EXTENDED_EXPONENTIAL_H

#include <xmmintrin.h>

#include "extended/generated/exp_table.h"
#include "extended/number.h"

struct Exponential {
  long double fraction;  // in (0.998, 2.003)
  int32_t exponent;
};

// 2^exponent for -1022 <= exponent <= 1023, free as the operand of a multiplication. The pattern
// goes to memory in one store: two would stall the load.
static inline double double_power_of_two(int32_t exponent) {
  const uint32_t upper = uint32_t(exponent + 1023) << 20;
  __m128 word;
  asm("movss %1, %0" : "=x"(word) : "m"(upper));
  double power;
  _mm_storel_pi(reinterpret_cast<__m64*>(&power), _mm_unpacklo_ps(_mm_setzero_ps(), word));
  return power;
}

static inline int32_t exp_steps(long double x) {
  return nearest_integer(x * anew(_nox_exp_table).inv_step);
}

static inline Reduced exp_reduced(long double x, int32_t n) {
  return {n, (long double)n, x - n * (long double)anew(_nox_exp_table).high};
}

// e^x for |x| < 12000: the error is below 0.52 units of the fraction's last place.
__attribute__((always_inline)) static inline Exponential exp_near(Reduced x) {
  const ExpTable& table = anew(_nox_exp_table);
  const long double r = x.rest - x.steps * (long double)table.low;
  const double* const power = table.power[x.n & 255];
  const long double u = r * r;
  const long double p = (((table.c5 * r + table.c4) * r + table.c3) * r + 0.5f) * u + r;
  return {power[0] + (power[1] + ((long double)power[1] + power[0]) * p), x.n >> 8};
}

__attribute__((always_inline)) static inline Exponential exp_parts(long double x) {
  return exp_near(exp_reduced(x, exp_steps(x)));
}

// Of sinh x and cosh x, 0 <= x < 12000, two addends each, the second far below the first. Where the
// sums of the upper parts are not exact, the careful form adds what they lose.
struct HyperbolicAddends {
  long double sine, sine_tail, cosine, cosine_tail;
  int32_t exponent;
};

// The quotient of the powers of two of e^-x and e^x, x = n steps.
static inline double inverse_square(int32_t n) {
  const int32_t difference = (-n >> 8) - (n >> 8);
  return double_power_of_two(difference < -1000 ? -1000 : difference);
}

template <bool kCareful>
__attribute__((always_inline)) static inline HyperbolicAddends hyperbolic_addends(Reduced x,
                                                                                  const double& s) {
  const ExpTable& table = anew(_nox_exp_table);
  const int32_t n = x.n;
  const long double r = x.rest - x.steps * (long double)table.low;
  const auto &up = table.power[n & 255], &down = table.power[-n & 255];
  const auto &up2 = anew(up), &down2 = anew(down);
  const long double u = r * r;
  const long double even = (table.e4 * u + 0.5f) * u;
  const long double odd = (table.o5 * u + table.o3) * (u * r) + r;
  const long double up_tail = up[1] + ((long double)up[1] + up[0]) * (even + odd);
  const long double down_tail = (down[1] + ((long double)down[1] + down[0]) * (even - odd)) * s;
  const long double down_head = (long double)down[0] * s;
  const long double up_head = up[0], less = up_head - down_head;
  const long double more = up2[0] + (long double)down2[0] * s;
  long double sine_tail = up_tail - down_tail, cosine_tail = up_tail + down_tail;
  if (kCareful) {
    sine_tail += (up_head - less) - down_head;
    cosine_tail += (up_head - more) + down_head;
  }
  return {less, sine_tail, more, cosine_tail, (n >> 8) - 1};
}

struct Hyperbolic {
  long double sine, cosine;
  int32_t exponent;
};

// sinh x and cosh x: errors below 2.1 and 1.1 units of the last place. At most 2^1.01 before
// scaling; relatively accurate next to 0.
__attribute__((always_inline)) static inline Hyperbolic sinh_cosh_near(Reduced x, const double& s) {
  const HyperbolicAddends a = hyperbolic_addends<false>(x, s);
  return {a.sine + a.sine_tail, a.cosine + a.cosine_tail, a.exponent};
}

__attribute__((always_inline)) static inline Hyperbolic sinh_cosh_parts(long double x) {
  const Reduced reduced = exp_reduced(x, exp_steps(x));
  return sinh_cosh_near(reduced, inverse_square(reduced.n));
}

#endif
