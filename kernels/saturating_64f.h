// SPDX-License-Identifier: MIT
//
// What the odd functions of double-precision arrays that tend to a limit share, on the x87 unit at
// 64-bit precision: the error function, the arctangent and the hyperbolic tangent.
#ifndef LUX_KERNELS_SATURATING_64F_H
#define LUX_KERNELS_SATURATING_64F_H

#include "kernels/frame.h"
#include "kernels/screens.h"

// block(x, y): kBlock arguments below the bound, an upper word; element(x, y): one; from there on
// +-limit.
template <int kBlock, class Block, class Element>
static inline Status saturating_64f(const double* src, double* dst, int32_t len, uint32_t bound,
                                    uint64_t limit, Block block, Element element) {
  return run_kernel<X87Nearest<X87_EXTENDED>, kBlock>(
      Arrays<double>{src, src, dst, dst}, len,
      [=](int32_t i, int32_t last) {
        return blocks_below<kBlock>(src, dst, bound, i, last, block);
      },
      [=](int32_t i, Status*) {
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (a < uint64_t(bound) << 32)
          element(src + i, dst + i);
        else
          store_bits(dst + i, a > Format<double>::kInf ? quieted<double>(x) : limit | (x ^ a));
      });
}

// The same where an element of a block is computed as any other.
template <int kBlock, class Element>
static inline Status saturating_64f(const double* src, double* dst, int32_t len, uint32_t bound,
                                    uint64_t limit, Element element) {
  const auto block = [=](const double* x, double* y) {
#pragma GCC unroll 4
    for (int lane = 0; lane < kBlock; ++lane) element(x + lane, y + lane);
  };
  return saturating_64f<kBlock>(src, dst, len, bound, limit, block, element);
}

#endif
