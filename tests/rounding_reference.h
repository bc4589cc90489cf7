// SPDX-License-Identifier: MIT
//
// Rounding to integers the plain way: take the number apart into integer and fraction, decide, put
// it together again. Integers only, so no rounding of the machine can interfere.
#ifndef LUX_TESTS_ROUNDING_REFERENCE_H
#define LUX_TESTS_ROUNDING_REFERENCE_H

#include "tests/support.h"

enum class Rounding { kNearestEven, kDown, kUp, kTowardZero, kNearestAway };

// value * 2^-shift with the sign given, for a value below 2^(mantissa + 1): exact.
template <class U>
U assemble(U sign, U value, int shift) {
  constexpr int m = Format<U>::mantissa;
  if (value == 0) return sign;
  const int lead = 8 * int(sizeof(U)) - 1 - std::countl_zero(value);
  return sign | ((U(lead - shift + Format<U>::bias) << m) + ((value << (m - lead)) - (U(1) << m)));
}

template <class U>
struct Parts {
  U sign, whole, fraction;
  int shift;  // the fraction counts units of 2^-shift
};
// For values below 2^mantissa only.
template <class U>
Parts<U> take_apart(U x) {
  constexpr int m = Format<U>::mantissa;
  const U a = x & ~kSign<U>;
  const int exponent = int(a >> m);
  const U digits = exponent ? (a & ((U(1) << m) - 1)) | (U(1) << m) : a;
  const int shift = m + Format<U>::bias - (exponent ? exponent : 1);
  if (shift > m + 1) return {x & kSign<U>, 0, digits, shift};
  return {x & kSign<U>, digits >> shift, digits & ((U(1) << shift) - 1), shift};
}
template <class U>
bool has_no_fraction_bits(U x) {
  return (x & ~kSign<U>) >= U(Format<U>::bias + Format<U>::mantissa) << Format<U>::mantissa;
}

template <class U>
U rounded(U x, Rounding mode) {
  if (is_nan(x)) return x | kQuiet<U>;
  if (has_no_fraction_bits(x)) return x;
  const Parts<U> p = take_apart(x);
  const bool tiny = p.shift > Format<U>::mantissa + 1;  // below a half in any case
  const U half = tiny ? ~U(0) : U(1) << (p.shift - 1);
  bool up = false;  // in magnitude
  switch (mode) {
    case Rounding::kDown:
      up = p.sign && p.fraction;
      break;
    case Rounding::kUp:
      up = !p.sign && p.fraction;
      break;
    case Rounding::kTowardZero:
      break;
    case Rounding::kNearestAway:
      up = p.fraction >= half;
      break;
    case Rounding::kNearestEven:
      up = p.fraction > half || (p.fraction == half && (p.whole & 1));
      break;
  }
  return assemble<U>(p.sign, p.whole + up, 0);
}

// The fraction that Modf stores.
template <class U>
U fraction_of(U x) {
  if (is_nan(x)) return x | kQuiet<U>;
  if (has_no_fraction_bits(x)) return x & kSign<U>;
  const Parts<U> p = take_apart(x);
  if (p.whole == 0) return x;
  return assemble<U>(p.sign, p.fraction, p.shift);
}

#endif
