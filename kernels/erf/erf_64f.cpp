// SPDX-License-Identifier: MIT
//
// erf of double-precision arrays, on the x87 unit at 64-bit precision.
//
//   |x| < 9/128   x (2/sqrt(pi) + z P(z)), z = x^2, P of degree five; subnormal results are rounded
//                 once
//   |x| < 6       k = round(40 |x|), r = |x| - point of cell k,
//                 erf |x| = head + (tail + c1 r + ... + c7 r^7)
//   beyond        +-1: erf rounds to it from 5.9216 on
//
// The points are singles near k/40 whose slopes c1 are doubles but for 2^-60 of them, which saves a
// second part. The sums are off by at most 2^-60 of the result; their roundings at 64 bits, of
// which the last two count, add 2^-63: 0.006 ulp together beside the last rounding.
//
// Worst error found 0.5047 ulp, at 0x3FB6E04FBC353CCA (sampled against 200 bits).
#include "kernels/frame.h"
#include "kernels/erf/generated/erf_64f_table.h"  // kCell, kSeries
#include "kernels/grid.h"
#include "kernels/saturating_64f.h"

// Upper words.
constexpr uint32_t kSeriesEnd = 0x3FB20000;  // 9/128
constexpr uint32_t kSaturated = 0x40180000;  // 6

constexpr float kCellsPerUnit = 40;

static inline long double series(long double x) {
  const long double z = x * x;
  const auto& s = kSeries.s;
  const long double sum = ((((s[0] * z + s[1]) * z + s[2]) * z + s[3]) * z + s[4]) * z + s[5];
  return (sum * z + kSeries.tail + kSeries.head) * x;
}

// 9/128 <= |x| < 6. The cells of all elements are looked up first, for one element is a chain longer
// than the processor looks ahead. r is a double, exactly.
template <int kCount>
__attribute__((always_inline)) static inline void table_block(const double* x, double* y) {
  const Cell* cell[kCount];
  double r[kCount];
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const long double a = magnitude_of(x + lane);
    cell[lane] = kCell + (Grid<1>::index(a * kCellsPerUnit) - kFirstCell);
    put(r + lane, a - cell[lane]->point);
  }
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const Cell& c = *cell[lane];
    const uint32_t sign = upper_word(x + lane) & kSignUpper;
    const long double z = load_extended(r + lane);
    const long double sum =
        ((((((c.c7 * z + c.c6) * z + c.c5) * z + c.c4) * z + c.c3) * z + c.c2) * z + c.c1) * z;
    in_memory(y + lane) = double(sum + c.tail + c.head);
    set_upper_bits(y + lane, sign);
  }
}

// |x| < 6
static inline void element(const double* x, double* y) {
  if (upper_magnitude(x) < kSeriesEnd)
    in_memory(y) = double(series(load_extended(x)));
  else
    table_block<1>(x, y);
}

static inline void block(const double* x, double* y) {
  const bool all_in_table =
      none_outside<4>([=](int lane) { return upper_magnitude(x + lane) - kSeriesEnd; });
  if (__builtin_expect(all_in_table, true)) return table_block<4>(x, y);
  for (int lane = 0; lane < 4; ++lane) element(x + lane, y + lane);
}

static Status erf_64f(const double* src, double* dst, int32_t len) {
  return saturating_64f<4>(
      src, dst, len, kSaturated, Format<double>::kOne,
      [](const double* x, double* y) { block(x, y); },
      [](const double* x, double* y) { element(x, y); });
}

LUX_KERNELS_64F(Erf, 1_1, erf_64f)
