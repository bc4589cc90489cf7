// SPDX-License-Identifier: MIT
//
// Hypotenuse of double-precision arrays. Arguments that are both below 2^-523 are multiplied by
// 2^1000 first. No other sum of squares is kept from leaving the range of doubles.
//
// Squares and sum are rounded to 53 bits each, which counts most just above x^2 = 2, y^2 = 1: a
// result is off by up to 1.25/sqrt(3) + 0.5 = 1.222 ulp. Worst error found 1.2169 ulp, at
// 0x3FF6AA9B990C98D2, 0x3FF00485EC8D5A6A (sampled).
#include "kernels/arith/hypot.h"

template <>
struct Ordinary<double> {
  static constexpr uint32_t kLow = 0x20000000;   // 2^-511: sums are at least 2^-1022
  static constexpr uint32_t kHigh = 0x5F800000;  // 2^505: sums are finite
};

LUX_KERNELS_64F(Hypot, 2_1, hypot<double>)
