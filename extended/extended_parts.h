// SPDX-License-Identifier: MIT
//
// The fields of an extended number.
#ifndef LUX_EXTENDED_EXTENDED_PARTS_H
#define LUX_EXTENDED_EXTENDED_PARTS_H

#include "extended/internal.h"

struct ExtendedParts {
  uint64_t significand;
  uint16_t exponent;  // and sign

  bool is_special() const { return (exponent & 0x7FFF) == 0x7FFF; }
  bool is_nan() const { return is_special() && significand != 0x8000000000000000u; }
};

static inline ExtendedParts parts_of(long double x) {
  ExtendedParts parts;
  __builtin_memcpy(&parts.significand, &x, 8);
  __builtin_memcpy(&parts.exponent, reinterpret_cast<const char*>(&x) + 8, 2);
  return parts;
}

// |x| < 2^exponent.
static inline bool is_below(long double x, int32_t exponent) {
  return (parts_of(x).exponent & 0x7FFF) < 16383 + exponent;
}

// Below, the functions that are odd give their argument and those that are 1 at 0 give 1: the next
// term is less than 2^-16 units, and formed from the smallest numbers it would underflow.
constexpr int32_t kTinyExponent = -40;
static inline bool is_tiny(long double x) { return is_below(x, kTinyExponent); }

#endif
