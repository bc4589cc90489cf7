// SPDX-License-Identifier: MIT
//
// Hypotenuse of single-precision arrays. A double holds every sum of two squares as a normal
// number, so every finite element is ordinary. Worst error found 0.5000 ulp (sampled): the sum's
// and the root's rounding to 53 bits move the result by less than 2^-28 ulp before the last.
#include "kernels/arith/hypot.h"

template <>
struct Ordinary<float> {
  static constexpr uint32_t kLow = 0;
  static constexpr uint32_t kHigh = 0x7F800000;  // infinity
};

template <>
void hypot_extreme(const float* x, const float* y, float* dst) {
  hypot_ordinary<1>(x, y, dst);
}  // not counted: no single is finite and not ordinary

LUX_KERNELS_32F(Hypot, 2_1, hypot<&WideLibrary::Hypot_32f_A24>)
