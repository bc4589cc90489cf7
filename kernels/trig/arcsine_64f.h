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

// asin a less the angle of cell k.
static inline long double rotated(const double* x, uint32_t* k) {
  const long double a = magnitude_of(x), r = __builtin_sqrtl((1 - a) * (1 + a));
  *k = Grid<128>::index(a - r) + 128;
  const Rotation& t = kRotation[*k];
  const long double v = ((long double)t.cosine[0] + t.cosine[1]) * a +
                        ((long double)t.minus_sine[0] + t.minus_sine[1]) * r;
  return odd_series(kSeries, v);
}

// element(x, y): one argument up to 1 in magnitude.
template <class Element>
static inline Status arcsine(const double* src, double* dst, int32_t len, Element element) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 2>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        return elements_below<2>(src, dst, Upper<double>::kOne, i, last, element);
      },
      [&](int32_t i, Status* status) {
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (a <= Format<double>::kOne) {
          element(src + i, dst + i);
        } else if (a > Format<double>::kInf) {
          store_bits(dst + i, quieted<double>(x));
        } else {
          store_bits(dst + i, Format<double>::kDefaultNaN);
          _ErrorCall(arrays, LUX_DOMAIN, i, status);
        }
      });
}

#endif
