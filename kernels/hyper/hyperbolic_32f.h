// SPDX-License-Identifier: MIT
//
// What hyperbolic sine and cosine of single-precision arrays share.
//
//   j = round(32 |x|), r = |x| - j/32 exactly, |r| <= 1/64, z = cosh r - 1, v = sinh r / r - 1,
//   cosh |x| = C + (C z + S (r + r v)),  sinh |x| = S + (S z + C (r + r v)),
//   C = cosh(j/32) and S = sinh(j/32) from one table up to the largest finite result.
//
// No exponential and no power of two is needed, and nothing cancels near zero: in cell 0 the sine
// is 1 (r + r v).
//
// Magnitudes below 2^-20 are taken for 2^-20 where that leaves the result alone, since the products
// of smaller ones are subnormal: they raise underflow, and are slow.
//
// A24: z = r^2/2 + c4 r^4 and v = s3 r^2 + s5 r^4 packed, the rest on the x87 unit at 53-bit
// precision. z is below 2^-13 and has two roundings that count, v below 2^-14.5 and three: they are
// off by 2^-36 and 2^-36.9, the series included. That is 2^-35.9 of a cosine. Of a sine it is most at
// the lower end of cell 1, where S is 1/32, C r -1/64 and the result 1/64: 2^-34.6.
// A21: z = c2 r^2, v = s3 r^2; all of it packed, with halves of C and S, so that no entry overflows,
// and doubled at last.
// A11: the same without z and v, which are below 2^-13; a sine is off by up to 2^-12.26, in
// cell 1.
#ifndef LUX_KERNELS_HYPER_HYPERBOLIC_32F_H
#define LUX_KERNELS_HYPER_HYPERBOLIC_32F_H

#include "kernels/frame.h"
#include "kernels/nearest_32f.h"
#include "kernels/screens.h"
#include "kernels/hyper/hyperbolic_32f_step.h"

// ---- A24

template <Function kFunction>
constexpr uint32_t kMargin = kFunction == kCosh ? 0x22800 : 0x56000;  // 2^-35.9, 2^-34.6

// The x87 unit takes r once more from |x| and j/32. Below 2^-20 the terms z and v do not count.
template <Function kFunction, float (*kAccurate)(float), int kCount>
static inline void x87_block(const float* src, float* dst) {
  alignas(16) float argument[4], a[4], grid[4], shifted[4], z[4], v[4];
  double y[kCount];
  const __m128 x = load_elements<kCount>(src), magnitudes = magnitude_of(x);
  const Reduced reduced = reduce(from_least(magnitudes));
  const __m128 r = from_least(magnitude_of(reduced.r));
  const __m128 square = r * r;
  uint32_t sign[kCount];
  for (int lane = 0; lane < kCount; ++lane)
    sign[lane] = load_bits(src + lane) & Format<float>::kSign;
  _mm_store_ps(argument, x);
  _mm_store_ps(a, magnitudes);
  _mm_store_ps(shifted, reduced.at.shifted);
  _mm_store_ps(grid, reduced.at.multiple);
  _mm_store_ps(z, square * all_lanes(0.5f) + square * square * all_lanes(kC4));
  _mm_store_ps(v, (square * all_lanes(kS5) + all_lanes(kS3)) * square);
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const SingleCell& cell = kSingleCell[Grid<32>::index(shifted + lane)];
    const double leading = kFunction == kCosh ? cell.cosh : cell.sinh;
    const double other = kFunction == kCosh ? cell.sinh : cell.cosh;
    const double rest = double(a[lane]) - grid[lane];
    const long double result = leading + (leading * z[lane] + other * (rest + rest * v[lane]));
    put_copy(y + lane, result);
    put(dst + lane, result);
    if (kFunction == kSinh) set_upper_bits(dst + lane, sign[lane]);
  }
  if (any_undecided<kMargin<kFunction>>(y)) settle<kMargin<kFunction>, kAccurate>(y, argument, dst);
}

// ---- Arrays

template <class Control, Function kFunction, auto kStep, class Block, class One>
static inline Status hyperbolic(const float* src, float* dst, int32_t len, Block block,
                                One element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, 4>(
      arrays, len,
      with_wide_step<kUnitOf<Control>, kStep, kUnitOf<Control> != Unit::kSse>(
          arrays, len,
          [=](int32_t i, int32_t last) {
            return blocks_below<4>(src, dst, kOverflow, i, last, block);
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

template <Function kFunction, float (*kAccurate)(float), auto kStep>
static inline Status hyperbolic_a24(const float* src, float* dst, int32_t len) {
  return hyperbolic<BothNearest<X87_DOUBLE>, kFunction, kStep>(
      src, dst, len, [](const float* x, float* y) { x87_block<kFunction, kAccurate, 4>(x, y); },
      [](const float* x, float* y) { x87_block<kFunction, kAccurate, 1>(x, y); });
}

template <Function kFunction, Grade kGrade, auto kStep>
static inline Status hyperbolic_packed(const float* src, float* dst, int32_t len) {
  return hyperbolic<SseNearest, kFunction, kStep>(
      src, dst, len, [](const float* x, float* y) { packed_block<kFunction, kGrade, 4>(x, y); },
      [](const float* x, float* y) { packed_block<kFunction, kGrade, 1>(x, y); });
}

#endif
