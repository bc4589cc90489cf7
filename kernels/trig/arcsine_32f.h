// SPDX-License-Identifier: MIT
//
// What arcsine and arccosine of single-precision arrays share.
//
//   |x| <= 1/2   u = |x|
//   beyond       u = sqrt(z), z = (1 - |x|)/2 exactly, for asin |x| = pi/2 - 2 asin u
//
// A24: the root in two parts, packed: s = h + t is the rounded root, h its leading 12 bits, so that
// r = z - h^2 - 2 h t - t^2 has no rounding, and s + r (1/2 / s) is sqrt z but for 2^-46. The rest goes
// through the x87 unit. A21 and A11 stay packed, with the plain root; an arcsine below 2^-12 passes as it is,
// so that nothing depends on how the processor treats subnormal operands.
#ifndef LUX_KERNELS_TRIG_ARCSINE_32F_H
#define LUX_KERNELS_TRIG_ARCSINE_32F_H

#include "kernels/screens.h"
#include "kernels/trig/arcsine_32f_step.h"
#include "kernels/trig/inverse_32f.h"

// The quadratics are off by 2^-36.6 and u by 2^-46; a difference from pi/2 makes at most twice of it.
constexpr uint32_t kMargin = 0x18000;

template <const Cases& kCases, float (*kAccurate)(float), int kCount>
static inline void arcsine_block(const float* src, float* dst) {
  alignas(16) float argument[4], high[4], low[4], cell[4], word[4];
  double y[kCount];
  const __m128 x = load_elements<kCount>(src);
  const Folded f = fold(x);
  const __m128 half = all_lanes(0.5f) / _mm_max_ps(f.root, all_lanes(0x1p-60f));  // not 1/0
  const __m128 h = leading_half(f.root), t = f.root - h, ht = h * t;
  const __m128 rest = f.z - h * h - (ht + ht) - t * t;
  _mm_store_ps(argument, x);
  _mm_store_ps(high, select(f.mask, f.root, f.a));
  _mm_store_ps(low, _mm_and_ps(f.mask, rest * half));
  _mm_store_ps(cell, shifted_to_grid<kCells>(select(f.mask, f.root, f.a)));
  _mm_store_ps(word, _mm_or_ps(sign_of(x), _mm_and_ps(f.mask, all_lanes(kFoldedBit))));
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i)
    inverse<kCells>(kQuadratic, kCases, double(high[i]) + low[i], cell + i, word + i, y + i,
                    dst + i);
  if (any_undecided<kMargin>(y)) settle<kMargin, kAccurate>(y, argument, dst);
}

template <class Control, auto kStep, class Block, class One>
static inline Status arcsine(const float* src, float* dst, int32_t len, Block block, One element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, 4>(
      arrays, len,
      with_wide_step<kUnitOf<Control>, kStep, kUnitOf<Control> != Unit::kSse>(
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

template <const Cases& kCases, float (*kAccurate)(float), auto kStep>
static inline Status arcsine_a24(const float* src, float* dst, int32_t len) {
  return arcsine<BothNearest<X87_DOUBLE>, kStep>(
      src, dst, len, [](const float* x, float* y) { arcsine_block<kCases, kAccurate, 4>(x, y); },
      [](const float* x, float* y) { arcsine_block<kCases, kAccurate, 1>(x, y); });
}

template <const auto& kP, auto kCombine, auto kStep>
static inline Status arcsine_packed(const float* src, float* dst, int32_t len) {
  return arcsine<SseNearest, kStep>(
      src, dst, len, [](const float* x, float* y) { packed_block<kP, kCombine, 4>(x, y); },
      [](const float* x, float* y) { packed_block<kP, kCombine, 1>(x, y); });
}

#endif
