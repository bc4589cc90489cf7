// SPDX-License-Identifier: MIT
//
// What arctangent and the angle of a point share in double precision, on the x87 unit at 64-bit
// precision. The point (b, a), a, b >= 0, is turned back by a tabulated angle near its own:
//
//   cell of a/b from its exponent and upper five fraction bits, (d, n) a short point within it,
//   t = (a d - b n) / (a n + b d),  angle = atan(n/d) + atan t,  |t| < 2^-6.9,
//   atan t = t - t^3/3 + t^5/5 - t^7/7.
//
// The products with a short n are exact. Below 2^-8 nothing is turned, t = a/b; from 2^8 on pi/2,
// t = -b/a. The series moves a result by at most 2^-65.9 of it; the sums, the quotient and the last
// two additions round at 64 bits: together about 0.0005 ulp beside the last rounding.
#ifndef LUX_KERNELS_TRIG_ARCTANGENT_64F_H
#define LUX_KERNELS_TRIG_ARCTANGENT_64F_H

#include "kernels/trig/generated/atan_64f_table.h"  // kCell, kSeries
#include "kernels/trig/odd_series.h"

constexpr int32_t kLastCell = sizeof kCell / sizeof kCell[0] - 1;
constexpr int32_t kBelowFirst = ((1023 - 8) << 5) - 1;

// From the upper word of a positive double.
static inline const Cell& cell_of(uint32_t upper) {
  int32_t k = int32_t(upper >> 15) - kBelowFirst;
  k = k < 0 ? 0 : k;
  return kCell[k > kLastCell ? kLastCell : k];
}

static inline long double turned(const Cell& c, long double a, long double b) {
  return odd_series(kSeries, (a * c.d - b * c.n) / (a * c.n + b * c.d));
}

#endif
