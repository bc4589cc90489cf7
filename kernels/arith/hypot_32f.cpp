// SPDX-License-Identifier: MIT
//
// Hypotenuse of single-precision arrays. A double holds every sum of two squares as a normal
// number, so small arguments need no scaling. Worst error found 0.5000 ulp (sampled): the sum's
// rounding to 53 bits moves the root by less than 2^-28 ulp.
#include "kernels/arith/hypot.h"

template <>
struct Ordinary<float> {
  static constexpr uint32_t kLow = 0x00800000;   // 2^-126
  static constexpr uint32_t kHigh = 0x7F000000;  // 2^127: roots stay below 2^128
};

LUX_KERNELS_32F(Hypot, 2_1, hypot<float>)
