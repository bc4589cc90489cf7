// SPDX-License-Identifier: MIT
//
// Hyperbolic tangent of double-precision arrays, on the x87 unit at 64-bit precision.
//
//   j = round(64 |x|), r = |x| - j/64 exactly, |r| <= 1/128,
//   t = tanh r by its series to r^7,
//   tanh |x| = (T + (Tl + t)) / (1 + T t),  T + Tl = tanh(j/64).
//
//   Nothing cancels near zero: in cell 0 the result is t. From 19.061546 on it is 1.
//
// Worst error found 0.5033 ulp, at 0x4012E63B52A5C389 (sampled against exact values).
#include "kernels/hyper/cells_64f.h"
#include "kernels/saturating_64f.h"
#include "kernels/hyper/generated/tanh_64f_table.h"  // kCell, kSeries

constexpr uint32_t kOneFrom = 0x40330FC1;  // upper word of 19.061546; the table gives 1 just below

static inline void element(const double* x, double* y) {
  const uint32_t sign = upper_word(x) & kSignUpper;
  const long double a = magnitude_of(x);
  const Cell& cell = kCell[nearest_cell(a)];
  const long double r = a - cell.x, z = r * r;
  const long double t = ((kSeries[2] * z + kSeries[1]) * z + kSeries[0]) * z * r + r;
  put(y, (t + cell.low + cell.high) / (t * cell.high + 1.0f));
  set_upper_bits(y, sign);
}

static Status tanh_64f(const double* src, double* dst, int32_t len) {
  return saturating_64f<4>(src, dst, len, kOneFrom, Format<double>::kOne,
                           [](const double* x, double* y) { element(x, y); });
}

LUX_KERNELS_64F(Tanh, 1_1, tanh_64f)
