// SPDX-License-Identifier: MIT
//
// The long way to a complex power, for exponents and bases that need more than 64 bits for t and a:
// log2 |z| from the exact squares, near |z| = 1 from |z|^2 - 1, the angle from the exact quotient.
// t and a come out to 2^-114 of the largest term |w| |log z|: a power is right to the last bit
// while that is below 2^60, its magnitude stays right beyond, where the angle fades.
#include "complex/pow.h"

// What is left of finite right angles after whole turns, |result| <= 2.
static TwoPart without_turns(const TwoPart& a) {
  return exact_sum(a.high - 4 * nearest_whole(a.high / 4), a.low - 4 * nearest_whole(a.low / 4));
}

// To 2^-115 of the angle.
static TwoPart angle_long(const Complex64& z) {
  const auto& [large, small, to] = image_of(z);
  const int32_t i = nearest_integer(small / large * 64);
  const long double slope = i * (1 / 64.0L);
  const TwoPart s = TwoPart{small - slope * large, 0} / exact_sum(large, slope * small),
                square = s * s;

  // s - s^3/3 + s^5/5 - ... to s^17, |s| < 0.0079: the terms from s^9 on with 64 bits.
  long double rest = 1.0L / 17;
#pragma GCC unroll 4
  for (int k = 15; k >= 9; k -= 2) rest = rest * square.high + (k % 4 == 1 ? 1.0L : -1.0L) / k;
  TwoPart sum = square * rest;
  for (int k = 7; k >= 1; k -= 2) {
    const TwoPart& inverse = power_table.inverse[k];
    sum = ordered_sum(k % 4 == 1 ? inverse : -inverse, sum) * (k == 1 ? s : square);
  }
  const auto& base = power_table.slope[i];
  const TwoPart angle =
      TwoPart{base.high, 0} + (ordered_sum(base.middle, base.low) + sum * power_table.radian);
  return TwoPart{to.shift, 0} + TwoPart{angle.high * to.turn, angle.low * to.turn};
}

static Point circle_point(const TwoPart& a) {
  const int32_t j = nearest_integer(a.high * 32);
  return circle_near(j, (a.high - j * (1 / 32.0L)) + a.low);
}

// 2^t (cos a + i sin a); the sign of an angle 0 comes apart.
static Complex64 polar(const TwoPart& t, const TwoPart& a, bool negative) {
  constexpr float kFarthest = 16000;  // over- and underflow by far, whatever the angle
  const float clamped = t.high > kFarthest ? kFarthest : t.high < -kFarthest ? -kFarthest : 0;
  const ScaledPower radius = clamped != 0 ? exp2_parts(clamped) : exp2_parts(t);
  const Point point = circle_point(without_turns(negative ? -a : a));
  const long double scale = power_of_two(radius.exponent) * radius.value;
  const long double sine = scale * point.sine;
  return {store_f64(double(scale * point.cosine)), store_f64(double(negative ? -sine : sine))};
}

// ---- Bases 0, infinite or NaN, exponents infinite or NaN: exp(w log z) with these rules
//
//   a part of the exponent that is 0 counts for nothing, whatever it is multiplied by; so does an
//   infinite one where log |z| or the angle is 0;
//   magnitude 0: zeros with the signs of cosine and sine, where the angle is unknown positive ones,
//   but the imaginary part's with the sign of an infinite angle;
//   magnitude infinite: an infinity in the direction of the angle, infinity + i NaN where it is
//   unknown; otherwise an unknown angle gives NaNs.

static bool is_zero(const Complex64& z) {
  return _nox_internal_iszero(z.re) && _nox_internal_iszero(z.im);
}
static bool is_infinite(long double x) { return __builtin_fabsl(x) == __builtin_infl(); }
static bool is_finite(long double x) {
  return __builtin_isless(__builtin_fabsl(x), __builtin_infl());
}

static long double times(long double exponent, long double log) {
  if (exponent == 0 || (log == 0 && is_infinite(exponent))) return 0;
  return exponent * log;
}

// The same direction in finite numbers, NaN where there is none.
static long double angle_of(const Complex64& z) {
  if (_nox_internal_isnan(z.re) || _nox_internal_isnan(z.im)) return __builtin_nan("");
  const bool wide = _nox_internal_isinf(z.re), high = _nox_internal_isinf(z.im);
  const bool zero = is_zero(z);
  if (!wide && !high && !zero) return angle_short(z);
  const double re = wide || zero, im = high;
  return angle_short({upper_word(&z.re) >> 31 ? -re : re, upper_word(&z.im) >> 31 ? -im : im});
}

static TwoPart log_of_magnitude(const Complex64& z) {
  const bool flat = __builtin_fabs(z.re) >= __builtin_fabs(z.im);
  const double* const parts = &z.re;
  const long double large = load_extended(parts + !flat), small = load_extended(parts + flat);
  const TwoPart squares[] = {exact_product(large, large), exact_product(small, small)};
  const TwoPart log =
      log2_long(squares[0] + squares[1], (TwoPart{-1, 0} + squares[0]) + squares[1]);
  return {log.high / 2, log.low / 2};
}

// a + b, but no exception where infinities of both signs meet: the magnitude may do without.
static long double silent_sum(long double a, long double b) {
  return is_infinite(a) && b == -a ? __builtin_nanl("") : a + b;
}

static long double log_of(const Complex64& z) {
  if (_nox_internal_isinf(z.re) || _nox_internal_isinf(z.im)) return __builtin_infl();
  if (_nox_internal_isnan(z.re) || _nox_internal_isnan(z.im)) return __builtin_nanl("");
  if (is_zero(z)) return -__builtin_infl();
  return log_of_magnitude(z).high;
}

static double part_of(double magnitude, long double direction) {
  const double size = direction == 0 ? 0 : magnitude;
  return __builtin_signbit(direction) ? -size : size;
}

static Complex64 special(const Complex64& z, const Complex64& w) {
  constexpr double kNan = __builtin_nan("");
  if (is_zero(w)) return {1, 0};
  const long double log = log_of(z), angle = angle_of(z);
  const long double u = load_extended(&w.re), v = load_extended(&w.im);
  long double t = times(u, log), a = times(u, angle);
  if (v != 0) {
    t -= times(v, angle) * whole(power_table.right_angle_log2_e);
    a = silent_sum(a, times(v, log) * whole(power_table.ln2_by_right_angle));
  }
  const bool known = is_finite(a), negative = __builtin_signbit(a);
  if (!is_infinite(t)) {
    if (!known || t != t) return {kNan, kNan};
    return polar({t, 0}, {a, 0}, negative);
  }
  const bool pole = t > 0 && is_zero(z);  // raises the divide-by-zero flag
  const double magnitude = t < 0 ? 0 : pole ? 1 / __builtin_fabs(z.re) : __builtin_inf();
  if (!known) return {magnitude, t > 0 ? kNan : is_infinite(a) && negative ? -0.0 : 0.0};
  const Point point = circle_point(without_turns({__builtin_fabsl(a), 0}));
  return {part_of(magnitude, point.cosine),
          part_of(magnitude, negative ? -point.sine : point.sine)};
}

void _nox_internal_cpow_long(const Complex64* z, const Complex64* w, Complex64* power) {
  const bool finite = is_finite(z->re) && is_finite(z->im) && is_finite(w->re) && is_finite(w->im);
  if (!finite || is_zero(*z)) {
    *power = special(*z, *w);
    return;
  }
  const TwoPart log = log_of_magnitude(*z), angle = angle_long(*z);
  const long double u = load_extended(&w->re), v = load_extended(&w->im);
  TwoPart t = log * u, a = angle * u;
  if (v != 0) {
    t = t + -((angle * v) * power_table.long_right_angle_log2_e);
    a = a + (log * v) * power_table.long_ln2_by_right_angle;
  }
  // Products in two parts do not keep the sign of a zero: that of the angle is the sign of Im z.
  const bool negative =
      a.high != 0 ? a.high < 0 : int32_t(upper_word(&w->re) ^ upper_word(&z->im)) < 0;
  *power = polar(t, a, negative);
}
