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

// q is n/d, or any other quotient of the same cell.
template <int kCount>
static inline void arctangent_block(const Cases& cases, const Ratio& r, __m128 q, __m128 words,
                                    float* dst) {
  alignas(16) float n[4], d[4], cell[4], word[4];
  _mm_store_ps(n, r.n);
  _mm_store_ps(d, r.d);
  _mm_store_ps(cell, cells_of(q));
  _mm_store_ps(word, _mm_or_ps(words, _mm_and_ps(r.swapped, all_lanes(kFoldedBit))));
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i)
    in_memory(dst + i) = inverse(kQuadratic, cases, double(n[i]) / d[i], cell + i, word + i);
}

#endif
