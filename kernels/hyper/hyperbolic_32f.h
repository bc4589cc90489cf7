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
#include "kernels/grid.h"
#include "kernels/nearest_32f.h"
#include "kernels/screens.h"
#include "kernels/hyper/generated/hyperbolic_32f_table.h"  // kSingleCell, kSingleHalves, kC2, ...

constexpr uint32_t kOverflow = 0x42B2D4FD;  // 89.41599: both functions round to infinity

enum Function { kCosh, kSinh };

// a = |x|
struct Reduced {
  OnGrid at;
  __m128 r;
};

static inline __m128 from_least(__m128 a) { return _mm_max_ps(a, all_lanes(0x1p-20f)); }

static inline Reduced reduce(__m128 a) {
  const OnGrid at = to_grid<32>(a);
  return {at, a - at.multiple};
}

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

// ---- A21, A11

enum Grade { kA21, kA11 };

struct Entries {
  __m128 leading, other;
};

template <Function kFunction, int kCount>
static inline Entries entries_of(__m128 shifted) {
  alignas(16) float word[4];
  _mm_store_ps(word, shifted);
  const auto pair = [&](int lane) {
    return reinterpret_cast<const float*>(kSingleHalves + Grid<32>::index(word + lane % kCount));
  };
  const PairLanes halves = turned(pair(0), pair(1), pair(2), pair(3));
  const __m128 cosh = halves.first, sinh = halves.second;
  return kFunction == kCosh ? Entries{cosh, sinh} : Entries{sinh, cosh};
}

template <Function kFunction, Grade kGrade, int kCount>
static inline void packed_block(const float* src, float* dst) {
  const __m128 x = load_elements<kCount>(src), a = magnitude_of(x);
  const Reduced reduced = reduce(from_least(a));
  const Entries entries = entries_of<kFunction, kCount>(reduced.at.shifted);
  __m128 r = reduced.r, rest;
  if (kGrade == kA21) {
    const __m128 z = r * r * all_lanes(kC2);
    r = r + r * (z * all_lanes(kS3OverC2));
    rest = entries.leading * z + entries.other * r;
  } else {
    rest = entries.other * r;
  }
  const __m128 half = entries.leading + rest, y = half + half;
  if (kFunction == kCosh) {
    store_elements<kCount>(dst, y);
  } else {
    // Small arguments pass, so that nothing depends on how the processor treats subnormals.
    const __m128 passes = _mm_cmplt_ps(a, all_lanes(0x1p-12f));
    store_elements<kCount>(dst, _mm_or_ps(select(passes, a, y), sign_of(x)));
  }
}

// ---- Arrays

template <class Control, Function kFunction, class Block, class One>
static inline Status hyperbolic(const float* src, float* dst, int32_t len, Block block,
                                One element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, 4>(
      arrays, len,
      [=](int32_t i, int32_t last) { return blocks_below<4>(src, dst, kOverflow, i, last, block); },
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

template <Function kFunction, float (*kAccurate)(float)>
static inline Status hyperbolic_a24(const float* src, float* dst, int32_t len) {
  return hyperbolic<BothNearest<X87_DOUBLE>, kFunction>(
      src, dst, len, [](const float* x, float* y) { x87_block<kFunction, kAccurate, 4>(x, y); },
      [](const float* x, float* y) { x87_block<kFunction, kAccurate, 1>(x, y); });
}

template <Function kFunction, Grade kGrade>
static inline Status hyperbolic_packed(const float* src, float* dst, int32_t len) {
  return hyperbolic<SseNearest, kFunction>(
      src, dst, len, [](const float* x, float* y) { packed_block<kFunction, kGrade, 4>(x, y); },
      [](const float* x, float* y) { packed_block<kFunction, kGrade, 1>(x, y); });
}

#endif
