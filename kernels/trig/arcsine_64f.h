// SPDX-License-Identifier: MIT
//
// What arcsine and arccosine of double-precision arrays share, on the x87 unit at 64-bit precision.
//
//   a = |x|,  r = sqrt((1 - a)(1 + a)),  k = round(128 (a - r)),
//   v = a cos A_k - r sin A_k,  asin a = A_k + asin v,  |v| < 0.0039,
//   asin v = v + v^3/6 + 3 v^5/40 + 15 v^7/336.
//
// a - r grows evenly with the angle, between 1 and sqrt 2 times as fast, so one table serves all of
// it and no path divides. The first angle is 0 and the last pi/2 exactly: there v is a and -r, and
// small results keep their relative accuracy.
//
// The series is off by 2^-69 of v. The root, both products, their sum and the last two additions
// round at 64 bits, each by at most a few 2^-64 of the result: together about 0.001 ulp beside the
// last rounding.
#ifndef LUX_KERNELS_TRIG_ARCSINE_64F_H
#define LUX_KERNELS_TRIG_ARCSINE_64F_H

#include "kernels/trig/generated/asin_64f_table.h"  // kRotation, kComplement, kSeries
#include "kernels/grid.h"
#include "kernels/screens.h"
#include "kernels/trig/odd_series.h"

// r as the exact sum of two doubles, and the cell.
struct Root {
  double high, low;
  uint32_t k;
};

static inline void find_root(const double* x, Root* to) {
  const long double a = magnitude_of(x), r = __builtin_sqrtl((1 - a) * (1 + a));
  to->k = Grid<128>::index(a - r) + 128;
  put(&to->high, r);
  put(&to->low, r - to->high);
}

// asin a less the angle of the cell.
static inline long double rotated(const double* x, const Root& root) {
  const Rotation& t = kRotation[root.k];
  const long double v =
      ((long double)t.cosine[0] + t.cosine[1]) * magnitude_of(x) +
      ((long double)t.minus_sine[0] + t.minus_sine[1]) * ((long double)root.high + root.low);
  return odd_series(kSeries, v);
}

// In two passes: one chain from the root to the result is longer than the processor looks ahead.
template <int kCount, class Result>
__attribute__((always_inline)) static inline void elements(const double* x, double* y,
                                                           Result result) {
  Root root[kCount];
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) find_root(x + lane, root + lane);
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane)
    result(x + lane, y + lane, rotated(x + lane, root[lane]), root[lane].k);
}

// result(x, y, rest, k) stores one, of an argument up to 1 in magnitude.
template <class Result>
static inline Status arcsine(const double* src, double* dst, int32_t len, Result result) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 2>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        return blocks_below<4, 2>(
            src, dst, Upper<double>::kOne, i, last,
            [=](const double* x, double* y) { elements<4>(x, y, result); },
            [=](const double* x, double* y) { elements<2>(x, y, result); });
      },
      [&](int32_t i, Status* status) {
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (a <= Format<double>::kOne) {
          elements<1>(src + i, dst + i, result);
        } else if (a > Format<double>::kInf) {
          store_bits(dst + i, quieted<double>(x));
        } else {
          store_bits(dst + i, Format<double>::kDefaultNaN);
          _ErrorCall(arrays, LUX_DOMAIN, i, status);
        }
      });
}

#endif
