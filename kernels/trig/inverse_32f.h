// SPDX-License-Identifier: MIT
//
// What the inverse trigonometric functions of single-precision arrays share once their argument is
// reduced to 0 <= u <= 1: the last steps on the x87 unit at 53-bit precision, the packed
// polynomial, and the walk over blocks of four.
//
//   y = u ((c2 u + c1) u + c0), a quadratic of the cell k = round(kCells u),
//   result = constant + factor y, rounded once; the element's case chooses factor and constant.
//
// The headers say by what part of y the quadratics are off. The 53-bit steps add less than 2^-50.
// Cell 0 is 1 + c2 u^2, so small arguments come out as they are.
#ifndef LUX_KERNELS_TRIG_INVERSE_32F_H
#define LUX_KERNELS_TRIG_INVERSE_32F_H

#include "kernels/frame.h"
#include "kernels/grid.h"
#include "kernels/nearest_32f.h"
#include "kernels/trig/inverse_32f_step.h"

// The upper three bits of an element's case word: the sign of the result, whether the argument was
// folded to the other side of the octant, and a further one of the function's own.
struct Case {
  double factor, constant;
};
typedef Case Cases[8];
constexpr uint32_t kFoldedBit = 0x40000000;

// The result, and a copy before rounding.
template <int kCells, class Quadratic>
static inline void inverse(const Quadratic* table, const Cases& cases, double u, const float* cell,
                           const float* word, double* y, float* dst) {
  const Quadratic& q = table[Grid<kCells>::index(cell)];
  const Case& c = cases[load_bits(word) >> 29];
  const long double result = ((q.c2 * u + q.c1) * u + q.c0) * u * c.factor + c.constant;
  put_copy(y, result);
  put(dst, result);
}

#endif
