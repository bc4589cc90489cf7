// SPDX-License-Identifier: MIT
//
// What arcsine and arccosine of single-precision arrays share.
//
//   |x| <= 1/2   u = |x|
//   beyond       u = sqrt(z), z = (1 - |x|)/2 exactly, for asin |x| = pi/2 - 2 asin u
//
// A24: the root in two parts, packed: h is its leading 12 bits, whose square is exact, and
// l = (z - h^2) / (sqrt z + h), so that h + l is sqrt z but for 2^-34. The rest goes through the
// x87 unit. A21 and A11 stay packed, with the plain root; an arcsine below 2^-12 passes as it is,
// so that nothing depends on how the processor treats subnormal operands.
#ifndef LUX_KERNELS_TRIG_ARCSINE_32F_H
#define LUX_KERNELS_TRIG_ARCSINE_32F_H

#include "kernels/screens.h"
#include "kernels/trig/arcsine_32f_step.h"
#include "kernels/trig/inverse_32f.h"

template <int kCount>
static inline void arcsine_block(const Cases& cases, const float* src, float* dst) {
  alignas(16) float high[4], low[4], cell[4], word[4];
  const __m128 x = load_elements<kCount>(src);
  const Folded f = fold(x);
  const __m128 h = leading_half(f.root);
  const __m128 sum = _mm_max_ps(f.root + h, all_lanes(0x1p-60f));  // no 0/0
  const __m128 l = (f.z - h * h) / sum;
  _mm_store_ps(high, select(f.mask, h, f.a));
  _mm_store_ps(low, _mm_and_ps(f.mask, l));
  _mm_store_ps(cell, cells_of(select(f.mask, f.root, f.a)));
  _mm_store_ps(word, _mm_or_ps(sign_of(x), _mm_and_ps(f.mask, all_lanes(kFoldedBit))));
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i)
    in_memory(dst + i) = inverse(kQuadratic, cases, double(high[i]) + low[i], cell + i, word + i);
}

template <class Control, auto kStep, class Block, class One>
static inline Status arcsine(const float* src, float* dst, int32_t len, Block block, One element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, 4>(arrays, len,
                                with_wide_step<Unit::kSse, kStep>(
                                    arrays, len,
                                    [=](int32_t i, int32_t last) {
                                      return blocks_below<4>(src, dst, kBeyondOne, i, last, block);
                                    }),
                                [&](int32_t i, Status* status) {
                                  const uint32_t x = load_bits(src + i), a = magnitude<float>(x);
                                  if (a < kBeyondOne) {
                                    element(src + i, dst + i);
                                  } else if (a > Format<float>::kInf) {
                                    store_bits(dst + i, quieted<float>(x));
                                  } else {
                                    store_bits(dst + i, Format<float>::kDefaultNaN);
                                    _ErrorCall(arrays, LUX_DOMAIN, i, status);
                                  }
                                });
}

template <const Cases& kCases>
static inline Status arcsine_a24(const float* src, float* dst, int32_t len) {
  return arcsine<BothNearest<X87_DOUBLE>, nullptr>(
      src, dst, len, [](const float* x, float* y) { arcsine_block<4>(kCases, x, y); },
      [](const float* x, float* y) { arcsine_block<1>(kCases, x, y); });
}

template <const auto& kP, auto kCombine, auto kStep>
static inline Status arcsine_packed(const float* src, float* dst, int32_t len) {
  return arcsine<SseNearest, kStep>(
      src, dst, len, [](const float* x, float* y) { packed_block<kP, kCombine, 4>(x, y); },
      [](const float* x, float* y) { packed_block<kP, kCombine, 1>(x, y); });
}

#endif
