// SPDX-License-Identifier: MIT
//
// What the inverse trigonometric functions of single-precision arrays share once their argument is
// reduced to 0 <= u <= 1: the last steps on the x87 unit at 53-bit precision, the packed
// polynomial, and the walk over blocks of four.
//
//   y = u ((c2 u + c1) u + c0), a quadratic of the cell k = round(512 u),
//   result = constant + factor y, rounded once; the element's case chooses factor and constant.
//
// The quadratics are off by at most 2^-33.5 of y (their headers have the figures), the 53-bit steps
// by less than 2^-50: 0.0014 ulp beside the last rounding. Cell 0 is 1 + c2 u^2, so small arguments
// come out as they are.
#ifndef LUX_KERNELS_TRIG_INVERSE_32F_H
#define LUX_KERNELS_TRIG_INVERSE_32F_H

#include "kernels/frame.h"
#include "kernels/grid.h"
#include "kernels/trig/inverse_32f_step.h"

// The upper three bits of an element's case word: the sign of the result, whether the argument was
// folded to the other side of the octant, and a further one of the function's own.
struct Case {
  double factor, constant;
};
typedef Case Cases[8];
constexpr uint32_t kFoldedBit = 0x40000000;

static inline __m128 cells_of(__m128 u) { return shifted_to_grid<512>(u); }

template <class Quadratic>
static inline float inverse(const Quadratic* table, const Cases& cases, double u, const float* cell,
                            const float* word) {
  const Quadratic& q = table[Grid<512>::index(cell)];
  const Case& c = cases[load_bits(word) >> 29];
  return float(((q.c2 * u + q.c1) * u + q.c0) * u * c.factor + c.constant);
}

#endif
