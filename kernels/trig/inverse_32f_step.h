// SPDX-License-Identifier: MIT
//
// What the packed steps of the inverse trigonometric functions in single precision share.
#ifndef LUX_KERNELS_TRIG_INVERSE_32F_STEP_H
#define LUX_KERNELS_TRIG_INVERSE_32F_STEP_H

#include "kernels/lanes.h"

constexpr double kPi = 0x1.921fb54442d18p+1;  // 3.141592653589793
constexpr double kHalfPi = kPi / 2;
constexpr float kSinglePi = 0x1.921fb6p+1f;
// u + u^3 P(z), z = u^2.
template <const auto& kP>
static inline Singles odd_polynomial(Singles u, Singles z) {
  return u + u * z * polynomial<kP>(z);
}

#endif
