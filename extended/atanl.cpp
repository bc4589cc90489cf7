// SPDX-License-Identifier: MIT
//
// Arc tangent of one extended number and the angle of a point, in radians and in degrees, by the
// method of angle.h. Here the turned point is exact, the quotient has two parts and so has the sum
// of table and quotient. Worst errors found (sampled): atan 0.5196, atan2 0.5150 ulp; in degrees
// 0.7478 ulp, where the result is next to the subnormals.
#include "extended/angle.h"
#include "extended/two_part.h"

// A point in the first octant, and the octant that it came from.
struct FirstOctant {
  long double n, d;
  int octant;
};

// With the infinities and zeros of atan2l: a corner or an axis stands for them.
static FirstOctant first_octant(long double y, long double x) {
  const bool y_infinite = __builtin_isinf(y), x_infinite = __builtin_isinf(x);
  long double b = __builtin_fabsl(y), a = __builtin_fabsl(x);
  if (y_infinite || x_infinite) {
    b = y_infinite;
    a = x_infinite;
  } else if (b == 0) {
    a = 1;
  }
  const bool exchanged = b > a;
  const int octant = exchanged * kExchanged + !!__builtin_signbit(x) * kNegative;
  return exchanged ? FirstOctant{a, b, octant} : FirstOctant{b, a, octant};
}

// Below this quotient the arc tangent is the quotient to a hundredth of a unit.
constexpr long double kSmallQuotient = 0x1p-35L;

// A quotient may underflow where the angle does not: where pi/2 or pi is added to it, or where it
// is turned into degrees. So exponents are compared first.
static int32_t exponent_gap(const FirstOctant& p) {
  return (parts_of(p.d).exponent & 0x7FFF) - (parts_of(p.n).exponent & 0x7FFF);
}
static bool is_small_quotient(const FirstOctant& p) {
  return exponent_gap(p) > 40 || p.n / p.d < kSmallQuotient;
}
static bool is_on_axis(const FirstOctant& p) { return p.octant != 0 && exponent_gap(p) > 130; }

// atan(n/d) less the angle of (64, j), for n/d not small.
struct Remainder {
  int32_t j;
  TwoPart angle;
};

static Remainder turned_first(long double n, long double d) {
  // So that nothing below leaves the range: n is not much smaller.
  if (d > 0x1p8000L || d < 0x1p-8000L) {
    const long double scale = d > 1 ? 0x1p-8192L : 0x1p8192L;
    n *= scale;
    d *= scale;
  }
  Remainder result;
  result.j = nearest_integer(n / d * 64);
  const long double t = kAtan.tangent[result.j];
  // Products with t are exact once their other factor is cut in two; so is what is left of n.
  const TwoPart cut = exact_product(d, t), turned = exact_product(n, t);
  const TwoPart ordinate = {(n - cut.high) - cut.low, 0};
  const TwoPart sum = exact_sum(d, turned.high);
  const TwoPart r = ordinate / ordered_sum(sum.high, sum.low + turned.low);
  const long double w = r.high * r.high;
  const double* const s = kAtan.careful;
  const long double series = s[0] + w * (s[1] + w * (s[2] + w * s[3]));
  result.angle = ordered_sum(r.high, r.low + r.high * w * series);
  return result;
}

static long double rounded_sum(long double high, const TwoPart& low) {
  const TwoPart sum = ordered_sum(high, low.high);
  return sum.high + (sum.low + low.low);
}

static long double radians(const FirstOctant& p) {
  const long double turn = kTurn[p.octant];
  const Angle* const angles = kAtan.angle[p.octant];
  if (is_on_axis(p)) return angles->high + (long double)angles->low;
  if (is_small_quotient(p)) return angles->high + (angles->low + p.n / p.d * turn);
  const auto [j, rest] = turned_first(p.n, p.d);
  if (p.octant == 0 && j == 0) return rest.high + rest.low;
  return rounded_sum(angles[j].high, {rest.high * turn, rest.low * turn + angles[j].low});
}

static TwoPart in_degrees(const TwoPart& angle) {
  const TwoPart product = exact_product(angle.high, kAtan.degree.high);
  return {product.high,
          product.low + (angle.high * kAtan.degree.low + angle.low * kAtan.degree.high)};
}

// x 2^exponent, x moderate.
static long double scaled(long double x, int32_t exponent) {
  asm("fscale" : "+t"(x) : "u"((long double)exponent));
  return x;
}

static long double degrees(const FirstOctant& p) {
  static const float axes[4] = {0, 90, 180, 90};
  const long double axis = axes[p.octant], turn = kTurn[p.octant];
  if (p.n == 0 || is_on_axis(p)) return axis;
  if (is_small_quotient(p)) {
    const Significand n = significand_of(p.n), d = significand_of(p.d);
    const TwoPart angle = in_degrees({n.m, 0}) / TwoPart{d.m, 0};
    return axis + scaled(angle.high + angle.low, n.exponent - d.exponent) * turn;
  }
  const auto [j, rest] = turned_first(p.n, p.d);
  const Angle& table = kAtan.degrees[j];
  const TwoPart angle = in_degrees(rest);
  if (p.octant == 0 && j == 0) return angle.high + angle.low;
  return rounded_sum(axis + table.high * turn, {angle.high * turn, (angle.low + table.low) * turn});
}

static long double with_sign(long double angle, long double y) {
  return __builtin_signbit(y) ? -angle : angle;
}

long double noxatanl_scalar(long double x) {
  if (parts_of(x).is_nan()) return x + x;
  return with_sign(radians(first_octant(x, 1)), x);
}

long double noxatan2l_scalar(long double y, long double x) {
  if (parts_of(y).is_nan() || parts_of(x).is_nan()) return y + x;
  return with_sign(radians(first_octant(y, x)), y);
}

long double noxatan2dl_scalar(long double y, long double x) {
  if (parts_of(y).is_nan() || parts_of(x).is_nan()) return y + x;
  return with_sign(degrees(first_octant(y, x)), y);
}
