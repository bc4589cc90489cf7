// SPDX-License-Identifier: MIT
//
// The packed steps of sine and cosine together in single precision; see kernels/trig/sincos_32f.cpp.
#ifndef LUX_KERNELS_TRIG_SINCOS_32F_STEP_H
#define LUX_KERNELS_TRIG_SINCOS_32F_STEP_H

#include "kernels/trig/trig_32f_step.h"

constexpr uint32_t kSinCosBound = 0x49742400;   // 1000000
constexpr uint32_t kTwoPartBound = 0x49000000;  // 2^19

// Beyond 2^19 n high no longer fits 53 bits: with high in two pieces every product and difference
// but the last is exact again. Below, the result is the same as in two parts.
constexpr double kTop = 0x1.921fb5p+0, kRest = kHalfPi.high - kTop;

// s is r, or 0 where r alone counts. V is double or several, or packed singles with coefficients rounded
// to C = float.
template <class C, class V>
static inline void polynomials(V r, V s, V& sine, V& cosine) {
  const V r2 = s * s;
  sine = r + (s * r2) * (C(kShortSine[0]) + r2 * (C(kShortSine[1]) + r2 * C(kShortSine[2])));
  cosine = (C(1) - C(0.5) * r2) +
           (r2 * r2) * (C(kShortCosine[0]) + r2 * (C(kShortCosine[1]) + r2 * C(kShortCosine[2])));
}

struct SineAndCosine {
  Singles sine, cosine;
};

static inline SineAndCosine sine_and_cosine_of(Singles shifted, Singles r, Singles s) {
  Singles sine, cosine;
  polynomials<float>(r, s, sine, cosine);
  const Singles odd = bit_mask(shifted, 1), second = bit_mask(shifted, 2);
  const Singles change = both(odd, differing(sine, cosine));
  return {differing(differing(sine, change), sign_where(second)),
          differing(differing(cosine, change), sign_where(differing(second, odd)))};
}

#endif
