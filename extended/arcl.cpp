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
// Worst errors found (sampled): asin 0.605 ulp at 0x8.83938ff86105eb9p-4, acos 0.622 at
// 0x9.6a035203e861dc1p-4, asinh 0.608 at 0xf.b3a55c62a3bec0fp-5, acosh 0.596 at
// 0xb.e80150c3bdd1022p-3.
#include "extended/generated/arcl_table.h"  // kArcSine, kAreaSine
#include "extended/logarithm.h"

constexpr TwoPart kHalfPi = {0xc90fdaa22168c235p-63L, -0x1.d9cceba3f91f2p-66L};
constexpr TwoPart kPi = {2 * kHalfPi.high, 2 * kHalfPi.low};
constexpr long double kFar = 0x1p33L;  // from here on 1/(2x)^2 is nothing beside log 2x

// The square root of a number in two parts.
static TwoPart root(const TwoPart& x) {
  const long double r = processor_root(x.high);
  if (r == 0) return {0, 0};
  const TwoPart square = exact_product(r, r);
  return {r, ((x.high - square.high) + (x.low - square.low)) / (2 * r)};
}

static long double polynomial(const long double (&coefficients)[18], long double z) {
  long double value = coefficients[17];
  for (int i = 16; i >= 0; --i) value = value * z + coefficients[i];
  return value;
}

// 2 asin s or 2 asinh s with s = sqrt(z): 2s and what is to be added.
static TwoPart twice_of_root(const long double (&coefficients)[18], long double z) {
  const TwoPart s = root({z, 0});
  return {2 * s.high, 2 * (s.low + s.high * (z * polynomial(coefficients, z)))};
}

static long double difference(const TwoPart& a, const TwoPart& b) {
  const TwoPart high = exact_sum(a.high, -b.high);
  return high.high + (high.low + (a.low - b.low));
}

static TwoPart arc_sine(long double x) {
  const long double z = x * x;
  return {x, x * (z * polynomial(kArcSine, z))};
}

// The comparisons that lead to an invalid result are those which a NaN leaves silent.
long double noxasinl_scalar(long double x) {
  const long double a = __builtin_fabsl(x);
  if (!__builtin_islessequal(a, 1.0L)) return invalid(x);
  if (is_tiny(x)) return x;
  if (a <= 0.5L) {
    const TwoPart angle = arc_sine(x);
    return angle.high + angle.low;
  }
  const long double angle = difference(kHalfPi, twice_of_root(kArcSine, 0.5L * (1 - a)));
  return __builtin_copysignl(angle, x);
}

long double noxacosl_scalar(long double x) {
  const long double a = __builtin_fabsl(x);
  if (!__builtin_islessequal(a, 1.0L)) return invalid(x);
  if (is_below(x, -70)) return kHalfPi.high;
  if (a <= 0.5L) return difference(kHalfPi, arc_sine(x));
  const TwoPart acute = twice_of_root(kArcSine, 0.5L * (1 - a));
  return x > 0 ? acute.high + acute.low : difference(kPi, acute);
}

// log(x) + exponent log 2, x in two parts.
static long double log_scaled(const TwoPart& x, int32_t exponent) {
  const LogPlace place = log_place(store_f32(float(x.high)));
  const TwoPart f = exact_sum(x.high * place.scale - 1.0f, x.low * place.scale);
  return careful_log_sum(f, *place.cell, place.exponent + exponent);
}

// log(x + sqrt(x^2 + one)) for x of 1/2 on; one is 1 or -1.
static long double area(long double x, long double one) {
  if (x >= kFar) {
    if (x == kExtendedInfinity) return x;
    const Significand parts = significand_of(x);
    return log_scaled({parts.m, 0}, parts.exponent + 1);
  }
  const TwoPart product = exact_product(x, x);
  TwoPart square = exact_sum(product.high, one);
  square = ordered_sum(square.high, square.low + product.low);
  const TwoPart r = root(square), argument = exact_sum(x, r.high);
  return log_scaled({argument.high, argument.low + r.low}, 0);
}

long double noxasinhl_scalar(long double x) {
  const long double a = __builtin_fabsl(x);
  if (is_tiny(x)) return x;
  if (!__builtin_isgreater(a, 0.5L)) {  // a NaN, too
    const long double z = x * x;
    return x + x * (z * polynomial(kAreaSine, z));
  }
  return __builtin_copysignl(area(a, 1), x);
}

long double noxacoshl_scalar(long double x) {
  if (!__builtin_isgreaterequal(x, 1.0L)) return invalid(x);
  if (x > 1.5L) return area(x, -1);
  const TwoPart s = twice_of_root(kAreaSine, 0.5L * (x - 1));
  return s.high + s.low;
}
