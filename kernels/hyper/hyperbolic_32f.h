// SPDX-License-Identifier: MIT
//
// What hyperbolic sine and cosine of single-precision arrays share.
//
//   j = round(32 |x|), r = |x| - j/32 exactly, |r| <= 1/64, z = c2 r^2, v = s3 r^2,
//   cosh |x| = C + (C z + S (r + r v)),  sinh |x| = S + (S z + C (r + r v)),
//   C = cosh(j/32) and S = sinh(j/32) from one table up to the largest finite result.
//
// No exponential and no power of two is needed, and nothing cancels near zero: in cell 0 the sine
// is 1 (r + r v).
//
// Magnitudes below 2^-20 are taken for 2^-20 where that leaves the result alone, since the products
// of smaller ones are subnormal: they raise underflow, and are slow.
//
// A24: z and v packed, the rest on the x87 unit at 53-bit precision, rounded once. The two series
// are off by 2^-31 of the result together, the packed roundings by 2^-35: 0.0075 ulp.
// A21: all of it packed, with halves of C and S, so that no entry overflows, and doubled at last.
// A11: the same without z and v, which are below 2^-13; a sine is off by up to 2^-12.26, in
// cell 1.
#ifndef LUX_KERNELS_HYPER_HYPERBOLIC_32F_H
#define LUX_KERNELS_HYPER_HYPERBOLIC_32F_H

#include "kernels/frame.h"
#include "kernels/hyper/hyperbolic_32f_step.h"
#include "kernels/screens.h"

// ---- A24

// The x87 unit takes r once more from |x| and j/32. Below 2^-20 the terms z and v do not count.
template <Function kFunction, int kCount>
static inline void x87_block(const float* src, float* dst) {
  alignas(16) float a[4], grid[4], shifted[4], z[4], v[4];
  const __m128 x = load_elements<kCount>(src), magnitudes = magnitude_of(x);
  const Reduced reduced = reduce(from_least(magnitudes));
  const __m128 r = from_least(magnitude_of(reduced.r));
  const __m128 square = r * r * all_lanes(kC2);
  uint32_t sign[kCount];
  for (int lane = 0; lane < kCount; ++lane)
    sign[lane] = load_bits(src + lane) & Format<float>::kSign;
  _mm_store_ps(a, magnitudes);
  _mm_store_ps(shifted, reduced.at.shifted);
  _mm_store_ps(grid, reduced.at.multiple);
  _mm_store_ps(z, square);
  _mm_store_ps(v, square * all_lanes(kS3OverC2));
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const SingleCell& cell = kSingleCell[Grid<32>::index(shifted + lane)];
    const double leading = kFunction == kCosh ? cell.cosh : cell.sinh;
    const double other = kFunction == kCosh ? cell.sinh : cell.cosh;
    const double rest = double(a[lane]) - grid[lane];
    in_memory(dst + lane) = float(leading + (leading * z[lane] + other * (rest + rest * v[lane])));
    if (kFunction == kSinh) set_upper_bits(dst + lane, sign[lane]);
  }
}

// ---- Arrays

template <class Control, Function kFunction, auto kStep, class Block, class One>
static inline Status hyperbolic(const float* src, float* dst, int32_t len, Block block,
                                One element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, 4>(
      arrays, len,
      with_wide_step<Unit::kSse, kStep>(arrays, len,
                                        [=](int32_t i, int32_t last) {
                                          return blocks_below<4>(src, dst, kOverflow, i, last,
                                                                 block);
                                        }),
      [&](int32_t i, Status* status) {
        const uint32_t x = load_bits(src + i), a = magnitude<float>(x);
        if (a < kOverflow) {
          element(src + i, dst + i);
        } else if (a > Format<float>::kInf) {
          store_bits(dst + i, quieted<float>(x));
        } else {
          store_bits(dst + i, Format<float>::kInf | (kFunction == kSinh ? x ^ a : 0));
          if (a != Format<float>::kInf) _ErrorCall(arrays, LUX_OVERFLOW, i, status);
        }
      });
}

template <Function kFunction>
static inline Status hyperbolic_a24(const float* src, float* dst, int32_t len) {
  return hyperbolic<BothNearest<X87_DOUBLE>, kFunction, nullptr>(
      src, dst, len, [](const float* x, float* y) { x87_block<kFunction, 4>(x, y); },
      [](const float* x, float* y) { x87_block<kFunction, 1>(x, y); });
}

template <Function kFunction, Grade kGrade, auto kStep>
static inline Status hyperbolic_packed(const float* src, float* dst, int32_t len) {
  return hyperbolic<SseNearest, kFunction, kStep>(
      src, dst, len, [](const float* x, float* y) { packed_block<kFunction, kGrade, 4>(x, y); },
      [](const float* x, float* y) { packed_block<kFunction, kGrade, 1>(x, y); });
}

#endif
