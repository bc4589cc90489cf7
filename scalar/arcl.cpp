// SPDX-License-Identifier: MIT
//
// Arc sine, arc cosine and their hyperbolic partners in extended precision.
//
//   |x| <= 1/2   asin x = x + x z P(z),  asinh x = x + x z Q(z),  z = x^2,  acos x = pi/2 - asin x
//   |x| >  1/2   acos |x| = 2 asin s,  s = sqrt((1 - |x|)/2) <= 1/2,
//                asin |x| = pi/2 - acos |x|,  acos -|x| = pi - acos |x|
//   x <= 3/2     acosh x = 2 asinh s,  s = sqrt((x - 1)/2)
//   x < 2^33     acosh x = log(x + sqrt(x^2 - 1)),  asinh x = log(x + sqrt(x^2 + 1))
//   otherwise    log 2x
//
// Roots, their sums with x and the differences from pi are carried in two parts, so that the last
// addition rounds nearly alone.
//
// Worst errors found (sampled): see the reference.
#include "scalar/arcl_table.h"  // kArcSine, kAreaSine
#include "scalar/internal.h"
#include "scalar/log.h"

// A number as the sum of two, the tail below the head's last place but for a few bits.
struct Pair {
  long double head, tail;
};

constexpr Pair kHalfPi = {0xc90fdaa22168c235p-63L, -0x1.d9cceba3f91f2p-66L};
constexpr Pair kPi = {2 * kHalfPi.head, 2 * kHalfPi.tail};
constexpr long double kFar = 0x1p33L;  // from here on 1/(2x)^2 is nothing beside log 2x

// Exact.
static inline Pair sum(long double a, long double b) {
  const long double head = a + b, b_part = head - a;
  return {head, (a - (head - b_part)) + (b - b_part)};
}

// 32 leading bits and the rest.
static inline Pair split(long double x) {
  const long double product = 0x1.00000001p32 * x, head = product - (product - x);
  return {head, x - head};
}

// The square root of a number that is given in two parts.
static Pair root(Pair x) {
  const long double r = processor_root(x.head);
  if (r == 0) return {0, 0};
  const auto [high, low] = split(r);
  const long double residue = ((x.head - high * high) - 2 * high * low) - low * low + x.tail;
  return {r, residue / (2 * r)};
}

static long double polynomial(const long double (&coefficients)[18], long double z) {
  long double value = coefficients[17];
  for (int i = 16; i >= 0; --i) value = value * z + coefficients[i];
  return value;
}

// 2 asin s or 2 asinh s with s = sqrt(z): 2s and what is to be added.
static Pair twice_of_root(const long double (&coefficients)[18], long double z) {
  const Pair s = root({z, 0});
  return {2 * s.head, 2 * (s.tail + s.head * (z * polynomial(coefficients, z)))};
}

static long double difference(Pair a, Pair b) {
  const Pair heads = sum(a.head, -b.head);
  return heads.head + (heads.tail + (a.tail - b.tail));
}

// A NaN itself, otherwise the default NaN and invalid. The comparisons that lead here are those
// which a NaN leaves silent.
static inline long double undefined(long double x) { return (x - x) / (x - x); }

static Pair arc_sine(long double x) {
  const long double z = x * x;
  return {x, x * (z * polynomial(kArcSine, z))};
}

long double noxasinl_scalar(long double x) {
  const long double a = __builtin_fabsl(x);
  if (!__builtin_islessequal(a, 1.0L)) return undefined(x);
  if (a <= 0.5L) {
    const Pair angle = arc_sine(x);
    return angle.head + angle.tail;
  }
  const long double angle = difference(kHalfPi, twice_of_root(kArcSine, 0.5L * (1 - a)));
  return __builtin_copysignl(angle, x);
}

long double noxacosl_scalar(long double x) {
  const long double a = __builtin_fabsl(x);
  if (!__builtin_islessequal(a, 1.0L)) return undefined(x);
  if (a <= 0.5L) return difference(kHalfPi, arc_sine(x));
  const Pair acute = twice_of_root(kArcSine, 0.5L * (1 - a));
  return x > 0 ? acute.head + acute.tail : difference(kPi, acute);
}

// log(x) + exponent log 2, x in two parts.
static long double log_scaled(Pair x, int32_t exponent) {
  const LogPlace place = log_place(store_f32(float(x.head)));
  return log_sum((x.head * place.scale - 1.0f) + x.tail * place.scale, *place.cell,
                 place.exponent + exponent);
}

// log(x + sqrt(x^2 + one)) for x of 1/2 on; one is 1 or -1.
static long double area(long double x, long double one) {
  if (x >= kFar) {
    if (x == __builtin_infl()) return x;
    const Significand parts = significand_of(x);
    return log_scaled({parts.m, 0}, parts.exponent + 1);
  }
  const auto [high, low] = split(x);
  Pair square = sum(high * high, one);
  square = sum(square.head, square.tail + (2 * high * low + low * low));
  const Pair r = root(square), argument = sum(x, r.head);
  return log_scaled({argument.head, argument.tail + r.tail}, 0);
}

long double noxasinhl_scalar(long double x) {
  const long double a = __builtin_fabsl(x);
  if (!__builtin_isgreater(a, 0.5L)) {  // a NaN, too
    const long double z = x * x;
    return __builtin_copysignl(x + x * (z * polynomial(kAreaSine, z)), x);  // -0
  }
  return __builtin_copysignl(area(a, 1), x);
}

long double noxacoshl_scalar(long double x) {
  if (!__builtin_isgreaterequal(x, 1.0L)) return undefined(x);
  if (x > 1.5L) return area(x, -1);
  const Pair s = twice_of_root(kAreaSine, 0.5L * (x - 1));
  return s.head + s.tail;
}
