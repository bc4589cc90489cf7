// SPDX-License-Identifier: MIT
//
// Sine, cosine and tangent of one extended number, in radians and in degrees.
//
// The angle is a multiple of pi/2 or 90 degrees and a pair r0 + r1, of it n pi/128 and a step
// r + t, t far below r. With the table's S + s and C + c, and h = r to 11 bits,
//
//   sine = (S + C h) + (what the sum lost + s + S (cos r - 1) + C (sin r - h + t) + c r):
//
// C h is exact, so that only the last addition rounds at full size.
//
// Degrees are reduced modulo 90 exactly; large integers through 2^12 = 1 modulo 45.
//
// Worst errors found, in units of the last place (sampled against 160 bits, among them the numbers
// closest to multiples of pi/2): sine 0.568, cosine 0.562, tangent 0.608, sine and cosine of
// degrees 0.569, next to the subnormals 0.75.
#include "extended/sine_cosine.h"
#include "extended/two_part.h"

struct CarefulStep {
  int32_t j;
  long double r, high, low;  // sin r = high + low, high of at most 11 bits
  long double less;          // cos r - 1
};

static CarefulStep careful_step(int octant, const long double r[2]) {
  const SineTable& table = kSines;
  const int32_t n = nearest_integer(r[0] * table.inv_step);
  const long double first = r[0] - n * (long double)table.p1;  // exact
  const long double second = n * (long double)table.p2;        // exact
  const long double left = first - second;
  const long double rest = ((first - left) - second) + (r[1] - n * (long double)table.p3);
  CarefulStep step;
  step.j = n + 32 * octant;
  step.r = left + rest;
  const long double tail = (left - step.r) + rest;
  const long double r2 = step.r * step.r;
  const long double scaled = step.r * 9007199254740993.0L;  // 2^53 + 1
  step.high = scaled - (scaled - step.r);
  step.low = (step.r - step.high) +
             (((table.s[2] * r2 + table.s[1]) * r2 + table.s[0]) * (r2 * step.r) + tail);
  step.less = ((table.c[2] * r2 + table.c[1]) * r2 + table.c[0]) * r2;
  return step;
}

static TwoPart sine_sum(const CarefulStep& step, int32_t quarter) {
  const double* const S = kSines.sine[(step.j + 64 * quarter) & 255];
  const double* const C = S + 2 * 64;
  const TwoPart head = ordered_sum(S[0], C[0] * step.high);
  return ordered_sum(head.high,
                     head.low + (S[1] + (S[0] * step.less + (C[0] * step.low + C[1] * step.r))));
}

static long double careful_sine(const CarefulStep& step, int32_t quarter) {
  return sine_sum(step, quarter).high;
}

static CarefulStep radians(long double x) {
  long double r[2];
  const int octant = noxreduce_pi04l(x, r);
  return careful_step(octant, r);
}

long double noxsinl_scalar(long double x) {
  if (parts_of(x).is_special()) return x - x;
  return is_tiny(x) ? x : careful_sine(radians(x), 0);
}

long double noxcosl_scalar(long double x) {
  if (is_tiny(x)) return 1;
  return parts_of(x).is_special() ? x - x : careful_sine(radians(x), 1);
}

void noxsincosl_scalar(long double x, long double* sine, long double* cosine) {
  if (parts_of(x).is_special()) {
    *sine = *cosine = x - x;
    return;
  }
  if (is_tiny(x)) {
    *sine = x;
    *cosine = 1;
    return;
  }
  const CarefulStep step = radians(x);
  *sine = careful_sine(step, 0);
  *cosine = careful_sine(step, 1);
}

long double noxtanl_scalar(long double x) {
  if (parts_of(x).is_special()) return x - x;
  if (is_tiny(x)) return x;
  const CarefulStep step = radians(x);
  return rounded_quotient(sine_sum(step, 0), sine_sum(step, 1));
}

// ---- Degrees

// The integer significand 2^exponent modulo 360.
static int32_t modulo_360(uint64_t significand, int32_t exponent) {
  if (exponent < 3) return int32_t(significand % 360 << exponent) % 360;
  return int32_t((significand % 45 << (exponent - 3) % 12) % 45) * 8;
}

// d degrees in radians. The leading 32 bits of d times those of pi/180 are exact.
static void degrees_to_radians(long double d, long double r[2]) {
  const long double high = _nox_degree[0], low = _nox_degree[1], d_high = leading_half(d);
  const long double exact = d_high * high, rest = (d - d_high) * high + d * low;
  r[0] = exact + rest;
  r[1] = (exact - r[0]) + rest;
}

// |x| degrees.
static CarefulStep degrees(long double x) {
  const ExtendedParts parts = parts_of(x);
  const int32_t exponent = (parts.exponent & 0x7FFF) - 16383 - 63;
  long double a = __builtin_fabsl(x);
  if (exponent >= 0) a = modulo_360(parts.significand, exponent);
  int64_t quadrant;  // below 2^57
  asm("fistpll %0" : "=m"(quadrant) : "t"(a * (1 / 90.0L)) : "st");
  const long double d = a - 90 * (long double)quadrant;  // exact
  long double r[2];
  degrees_to_radians(d, r);
  return careful_step(2 * int(quadrant & 3), r);
}

long double noxsindl_scalar(long double x) {
  if (parts_of(x).is_special()) return x - x;
  if (x == 0) return x;
  if (is_tiny(x)) {  // scaled, so that what the product loses is in the range as well
    const bool least = is_below(x, -8000);
    long double r[2];
    degrees_to_radians(least ? x * 0x1p4096L : x, r);
    return least ? r[0] * 0x1p-4096L : r[0];
  }
  const long double sine = careful_sine(degrees(x), 0);
  return parts_of(x).exponent >> 15 ? -sine : sine;
}

long double noxcosdl_scalar(long double x) {
  if (is_tiny(x)) return 1;
  return parts_of(x).is_special() ? x - x : careful_sine(degrees(x), 1);
}
