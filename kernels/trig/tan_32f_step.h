// SPDX-License-Identifier: MIT
//
// The packed step of the tangent in single precision; see kernels/trig/tan_32f.cpp.
#ifndef LUX_KERNELS_TRIG_TAN_32F_STEP_H
#define LUX_KERNELS_TRIG_TAN_32F_STEP_H

#include "kernels/trig/trig_32f_step.h"

// Largest magnitudes that the kernels reduce.
constexpr uint32_t kTangentA24 = 0x47FA0000, kTangentA21 = 0x48F42400;  // 128000, 500000

static inline Singles tangent_of(Singles shifted, Singles r, Singles s) {
  const Singles r2 = s * s, odd = bit_mask(shifted, 1);
  const Singles numerator = r + float(kT[0]) * s * r2;
  const Singles denominator = 1.0f + float(kU[0]) * r2 + float(kU[1]) * r2 * r2;
  const Singles change = both(odd, differing(numerator, denominator));
  const Singles quotient = differing(numerator, change) / differing(denominator, change);
  return differing(quotient, sign_where(odd));
}

#endif
