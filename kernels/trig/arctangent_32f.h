// SPDX-License-Identifier: MIT
//
// What arctangent and the angle of a point share in single precision: the quotient n/d of a smaller
// and a larger magnitude, and its arctangent.
//
// A24: the packed quotient chooses the cell alone; u = n/d is computed on the x87 unit. A21 and A11
// stay packed; arguments of Atan and quotients of Atan2 below 2^-12 pass as they are, so that
// nothing depends on how the processor treats subnormal operands.
#ifndef LUX_KERNELS_TRIG_ARCTANGENT_32F_H
#define LUX_KERNELS_TRIG_ARCTANGENT_32F_H

#include "kernels/trig/arctangent_32f_step.h"
#include "kernels/trig/inverse_32f.h"

// The quadratics are off by 2^-34.34; where pi/2 or pi has a part in the result, it is less of that.
constexpr uint32_t kMargin = 0x65000;

// q is n/d, or any other quotient of the same cell. y: a copy of the results before rounding.
template <int kCount>
static inline void arctangent_block(const Cases& cases, const Ratio& r, __m128 q, __m128 words,
                                    double (&y)[kCount], float* dst) {
  alignas(16) float n[4], d[4], cell[4], word[4];
  _mm_store_ps(n, r.n);
  _mm_store_ps(d, r.d);
  _mm_store_ps(cell, shifted_to_grid<kCells>(q));
  _mm_store_ps(word, _mm_or_ps(words, _mm_and_ps(r.swapped, all_lanes(kFoldedBit))));
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i)
    inverse<kCells>(kQuadratic, cases, double(n[i]) / d[i], cell + i, word + i, y + i, dst + i);
}

#endif
