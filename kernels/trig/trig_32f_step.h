// SPDX-License-Identifier: MIT
//
// What the packed steps of sine, cosine and tangent in single precision share; see kernels/trig/trig_32f.h.
#ifndef LUX_KERNELS_TRIG_TRIG_32F_STEP_H
#define LUX_KERNELS_TRIG_TRIG_32F_STEP_H

#include "kernels/grid.h"
#include "kernels/lanes.h"
#include "kernels/trig/generated/trig_32f_table.h"  // kPi, kHalfPi, kPiOver2

// Magnitude at or below a bound, by patterns: doubling drops the sign.
static inline bool within(uint32_t x, uint32_t bound) { return 2 * x <= 2 * bound; }

// Below this magnitude, products of an argument or of its powers may underflow where the result
// does not. Blocks with such an element take two more steps; others never have so small an r.
constexpr uint32_t kSmall = 0x35800000;  // 2^-20

// Takes the place of x in its product with 1/period: numbers from 1/2 on do not feel the addition,
// and below n is 0 either way.
static inline Singles nudged(Singles x) { return x + 0x1p-26f; }

// Takes the place of r in the terms of higher order, which are lost in the sum below 2^-20. A zero
// keeps its sign: a caller's denormals-are-zero makes one of r too.
static inline Singles unless_tiny(Singles r) {
  const Singles counts = is_at_most(all_lanes(0x1p-20f), magnitude_of(r));
  return both(r, either(counts, all_lanes(Format<float>::kSign)));
}

// All ones in the lanes where that bit of n is set. The exponent of the sum stays in place, so that
// normal numbers are compared; its pattern is no NaN, which would not survive an unoptimised build.
static inline Singles bit_mask(Singles shifted, uint32_t bit) {
  const Singles mask = all_lanes(0x4B000000 | bit);
  return is_equal(both(shifted, mask), mask);
}

static inline Singles sign_where(Singles mask) {
  return both(mask, all_lanes(Format<float>::kSign));
}

static inline OnGrid locate_quadrant(Singles x) { return to_grid<1>(x * float(kHalfPi.inverse)); }

#endif
