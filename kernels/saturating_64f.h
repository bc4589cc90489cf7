// SPDX-License-Identifier: MIT
//
// What the odd functions of double-precision arrays that tend to a limit share, on the x87 unit at
// 64-bit precision: the error function, the arctangent and the hyperbolic tangent.
#ifndef LUX_KERNELS_SATURATING_64F_H
#define LUX_KERNELS_SATURATING_64F_H

#include "kernels/frame.h"
#include "kernels/screens.h"

// element(x, y): one argument below the bound, an upper word; from there on +-limit.
template <int kBlock, class Element>
static inline Status saturating_64f(const double* src, double* dst, int32_t len, uint32_t bound,
                                    uint64_t limit, Element element) {
  return run_kernel<X87Nearest<X87_EXTENDED>, kBlock>(
      Arrays<double>{src, src, dst, dst}, len,
      [=](int32_t i, int32_t last) {
        return elements_below<kBlock>(src, dst, bound, i, last, element);
      },
      [=](int32_t i, Status*) {
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (a < uint64_t(bound) << 32)
          element(src + i, dst + i);
        else
          store_bits(dst + i, a > Format<double>::kInf ? quieted<double>(x) : limit | (x ^ a));
      });
}

#endif
