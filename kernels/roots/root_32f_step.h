// SPDX-License-Identifier: MIT
//
// The packed square root and reciprocal square root, of numbers that need no scaling: the processor's
// estimate of 1/sqrt(x) cut to nine bits, so that its square is exact, and the series that corrects it.
#ifndef LUX_KERNELS_ROOTS_ROOT_32F_STEP_H
#define LUX_KERNELS_ROOTS_ROOT_32F_STEP_H

#include "kernels/lanes.h"

static inline Singles nine_bits(Singles x) { return both(x, all_lanes(0xFFFF8000)); }

// ((1 + e)^(-1/2) - 1) / e to third order.
static inline Singles root_series(Singles e) {
  const Singles inner = -0.3125f * e + 0.375f;
  return inner * e - 0.5f;
}

constexpr uint32_t kLeast = 0x0C800000;  // 2^-102: from here on no step of a root is subnormal
constexpr uint32_t kLarge = 0x7E800000;  // 2^126: below it none of a reciprocal root

enum Zeros { kNoZeros, kWithZeros };

template <Zeros kZeros>
static inline Singles root(Singles x) {
  constexpr uint32_t kNineBits = 0x7FFF8000, kLargest = Format<float>::kInf - 1;
  Singles y = inverse_root_estimate(x);
  if constexpr (kZeros == kWithZeros)
    y = smaller(both(y, all_lanes(kNineBits)), all_lanes(kLargest));
  else
    y = nine_bits(y);
  const Singles h = nine_bits(x);
  const Singles minus_l = h - x;
  const Singles hy = h * y, minus_ly = minus_l * y;
  const Singles e = (hy * y - 1.0f) - minus_ly * y;
  const Singles correction = x * y * e * root_series(e);
  return (correction - minus_ly) + hy;
}

// The estimate y, and y s with s a power of two, x / s^2.
static inline Singles corrected(Singles y, Singles ys, Singles x) {
  const Singles e = x * (ys * ys) - 1.0f;
  return y + y * (e * root_series(e));
}

static inline Singles estimate(Singles x) { return nine_bits(inverse_root_estimate(x)); }

static inline Singles inverse_root(Singles x) {
  const Singles y = estimate(x);
  return corrected(y, y, x);
}

#endif
