// SPDX-License-Identifier: MIT
//
// Power of extended numbers: log2 x in two parts to 2^-115, its product by y, which reaches 2^14
// where the power is finite, to 2^-98, and 2 to that power with a table value that is added last.
// Exponents of +-1/2 go by the roots.
//
// Worst error found 0.506 ulp, 0.75 of a subnormal power, which is rounded once more (sampled).
#include "extended/power.h"

// x positive and finite.
static TwoPart log2_of(long double x) {
  const bool subnormal = x < 0x1p-16382L;
  const long double normal = subnormal ? x * 0x1p64L : x;
  const TwoPart log = log2_long({normal, 0}, {normal - 1, 0});
  return subnormal ? log + TwoPart{-64, 0} : log;
}

// x positive, finite and not 1, y finite.
static long double positive_pow(long double x, long double y) {
  if (y == 0.5L) return noxsqrtl_scalar(x);
  if (y == -0.5L) return __invsqrtl(&x);
  constexpr long double kLarge = 0x1p80L;  // log2 x is at least 2^-64, and at most 2^15
  if (__builtin_fabsl(y) < 1 / kLarge) return 1;
  if (__builtin_fabsl(y) > kLarge) return (x > 1) == (y > 0) ? overflow() : underflow();
  const TwoPart t = log2_of(x) * y;
  if (t.high > 16400) return overflow();
  if (t.high < -16500) return underflow();
  const ScaledPower power = exp2_parts(t);
  return scaled_extended(power.value, power.exponent);
}

static bool is_whole(long double y) {
  if (__builtin_fabsl(y) >= 0x1p63L) return true;
  return nearest_whole(y) == y;
}

static bool is_odd(long double y) {
  return __builtin_fabsl(y) < 0x1p64L && is_whole(y) && !is_whole(y / 2);
}

long double noxpowl_scalar(long double x, long double y) {
  if (y == 0 || x == 1) return 1;
  if (x != x || y != y) return x + y;
  const long double a = __builtin_fabsl(x);
  if (a == 1 && (is_whole(y) || __builtin_fabsl(y) == kExtendedInfinity)) return is_odd(y) ? x : 1;
  if (__builtin_fabsl(y) == kExtendedInfinity) return (a > 1) == (y > 0) ? kExtendedInfinity : 0;
  const bool negative = __builtin_signbit(x) && is_odd(y);
  long double power;
  if (a == 0)
    power = y > 0 ? 0 : 1 / a;  // raises the divide-by-zero flag
  else if (a == kExtendedInfinity)
    power = y > 0 ? kExtendedInfinity : 0;
  else if (x < 0 && !is_whole(y))
    return invalid(x);
  else
    power = positive_pow(a, y);
  return negative ? -power : power;
}
