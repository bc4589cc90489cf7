// SPDX-License-Identifier: MIT
//
// Which exception flags arguments and results account for.
#ifndef LUX_TESTS_EXCEPTIONS_H
#define LUX_TESTS_EXCEPTIONS_H

#include <string>

#include "tests/catalog.h"
#include "tests/support.h"

inline std::string names(uint16_t set) {
  std::string text;
  for (const auto& [flag, name] : {std::pair{kInvalid, " invalid"},
                                   {kDenormal, " denormal"},
                                   {kZeroDivide, " zero-divide"},
                                   {kOverflow, " overflow"},
                                   {kUnderflow, " underflow"},
                                   {kInexact, " inexact"}})
    if (set & flag) text += name;
  return text;
}

enum Class { kZero, kSubnormal, kSmallestNormal, kNormal, kInfinite, kNan };

template <class U>
inline Class class_of_pattern(const unsigned char* at) {
  U x;
  memcpy(&x, at, sizeof x);
  x &= ~kSign<U>;
  if (x == 0) return kZero;
  if (x > kInfinity<U>) return kNan;
  if (x == kInfinity<U>) return kInfinite;
  if (x == U(1) << Format<U>::mantissa) return kSmallestNormal;
  return x >> Format<U>::mantissa ? kNormal : kSubnormal;
}
inline Class class_of(const unsigned char* at, int width) {
  return width == 4 ? class_of_pattern<uint32_t>(at) : class_of_pattern<uint64_t>(at);
}

// What a call of one element may raise: by its arguments, by the class of each result, by its code.
inline uint16_t accounted_for(const Function& f, const Arrays& arrays, Status status) {
  const bool complex = f.type.parts == 2;
  if (f.counts) return 0;  // rounding to integers raises nothing at all
  uint16_t may = kInexact;
  bool infinite_argument = false, nan_argument = false;
  const auto each = [&](const void* element, auto look) {
    for (int part = 0; part < f.type.parts; ++part)
      look(
          class_of(static_cast<const unsigned char*>(element) + part * f.type.width, f.type.width));
  };
  const auto argument = [&](Class k) {
    if (k == kSubnormal) may |= kDenormal;
    infinite_argument |= k == kInfinite;
    nan_argument |= k == kNan;
  };
  const auto result = [&](Class k) {
    switch (k) {
      case kZero:
      case kSubnormal:
      case kSmallestNormal:  // perhaps from below
        may |= kUnderflow | kDenormal;
        break;
      case kInfinite:
        if (!infinite_argument) may |= kOverflow;
        if (!infinite_argument && complex) may |= kZeroDivide;  // a pole has no code there
        break;
      case kNan:
        if (!nan_argument) may |= kInvalid;
        if (!nan_argument && complex) may |= kZeroDivide;  // a pole without a direction
        break;
      case kNormal:
        break;
    }
  };
  for (int k = 0; k < f.shape.sources; ++k) each(arrays.source[k], argument);
  if (f.shape.scalar) each(arrays.scalar, argument);
  for (int k = 0; k < f.shape.destinations; ++k) each(arrays.destination[k], result);
  if (status == LUX_DOMAIN) may |= kInvalid;
  if (status == LUX_POLE) may |= kZeroDivide;
  if (status == LUX_OVERFLOW) may |= kOverflow;
  if (status == LUX_UNDERFLOW) may |= kUnderflow;
  return may;
}

#endif
