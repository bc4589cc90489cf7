// SPDX-License-Identifier: MIT
//
// The packed steps of sine and cosine in single precision; see kernels/trig/sin_32f.cpp and
// kernels/trig/cos_32f.cpp.
#ifndef LUX_KERNELS_TRIG_SINE_32F_STEP_H
#define LUX_KERNELS_TRIG_SINE_32F_STEP_H

#include "kernels/trig/sine_polynomial_32f.h"
#include "kernels/trig/trig_32f_step.h"

// Largest magnitudes that the kernels reduce.
constexpr uint32_t kSineA24 = 0x48F42400, kSineA21 = 0x49742400;      // 500000, 1000000
constexpr uint32_t kCosineA24 = 0x48F42400, kCosineA21 = 0x461D0000;  // 500000, 10048

static inline OnGrid locate_sine(Singles x) { return to_grid<1>(x * float(kPi.inverse)); }

static inline OnGrid locate_cosine(Singles x) {
  OnGrid at = to_grid<1>((x + float(kPiOver2)) * float(kPi.inverse));
  at.multiple -= 0.5f;
  return at;
}

static inline Singles sine_of(Singles shifted, Singles r, Singles s) {
  return differing(sine_polynomial<float>(r, s * s), sign_where(bit_mask(shifted, 1)));
}

#endif
