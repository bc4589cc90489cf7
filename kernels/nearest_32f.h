// SPDX-License-Identifier: MIT
//
// Results in single precision that are the nearest single to the exact value.
//
// A block has each result y as a double that is off by less than kMargin of its last places, of
// which a double has at most 2^53: a relative error e takes a margin of 2^53 e. The lower 29 bits of
// y are those that a single does not have. Where they are further than the margin from 2^28, half of
// a single's last place, y and the exact value lie on one side of it and round alike. What stays
// undecided, a share of kMargin 2^-28, is computed by another step, one by one.
//
// The bits are those of normal results. A subnormal one is rounded at a higher place: its kernel
// says what decides it.
#ifndef LUX_KERNELS_NEAREST_32F_H
#define LUX_KERNELS_NEAREST_32F_H

#include "kernels/frame.h"
#include "kernels/lanes.h"

// The 29 bits fill a word, in which the least undecided number is made 0.
constexpr int kAbove = 32 - 29;

template <uint32_t kMargin>
constexpr uint32_t kUndecidedEnd = kMargin << (kAbove + 1);

// Of a stored double; only its lower word is loaded.
template <uint32_t kMargin>
static inline uint32_t above_undecided(const double* y) {
  static_assert(kMargin < 1u << 28);
  return (load_words(y).lower << kAbove) + (0x80000000u + (kMargin << kAbove));
}

template <uint32_t kMargin>
static inline bool is_undecided(const double* y) {
  return above_undecided<kMargin>(y) < kUndecidedEnd<kMargin>;
}

template <uint32_t kMargin, int kCount>
static inline bool any_undecided(const double (&y)[kCount]) {
  uint32_t least = above_undecided<kMargin>(y);
#pragma GCC unroll 8
  for (int lane = 1; lane < kCount; ++lane) {
    const uint32_t above = above_undecided<kMargin>(y + lane);
    least = above < least ? above : least;
  }
  return __builtin_expect(least < kUndecidedEnd<kMargin>, 0);
}

// The same of fours of lanes by the packed unit, where integer instructions are what a block has
// most of. With another bit the 29 bits are patterns of normal singles, which compare as they do
// and touch neither flags nor settings.
template <uint32_t kMargin>
static inline __m128 undecided_lanes(const double* four) {
  constexpr uint32_t kLost = 0x1FFFFFFF, kNormal = 0x20000000, kMiddle = kNormal + 0x10000000;
  const auto pair = [=](int lane) { return reinterpret_cast<const float*>(four + lane); };
  const __m128 lower = turned(pair(0), pair(1), pair(2), pair(3)).first;
  const __m128 lost = _mm_or_ps(_mm_and_ps(lower, all_lanes(kLost)), all_lanes(kNormal));
  return _mm_and_ps(_mm_cmplt_ps(all_lanes(kMiddle - kMargin), lost),
                    _mm_cmplt_ps(lost, all_lanes(kMiddle + kMargin)));
}

template <uint32_t kMargin, int kCount>
static inline bool any_undecided_lane(const double (&y)[kCount]) {
  if constexpr (kCount % 4 != 0) return any_undecided<kMargin>(y);
  __m128 any = _mm_setzero_ps();
#pragma GCC unroll 2
  for (int lane = 0; lane + 4 <= kCount; lane += 4)
    any = _mm_or_ps(any, undecided_lanes<kMargin>(y + lane));
  return __builtin_expect(in_any_lane(any), 0);
}

// Gives the undecided results of a block anew, once the others are stored; kAccurate(x) is the
// nearest single for one argument.
template <uint32_t kMargin, float (*kAccurate)(float), int kCount>
__attribute__((noinline, cold)) static void settle(const double (&y)[kCount], const float* x,
                                                   float* dst) {
  for (int lane = 0; lane < kCount; ++lane)
    if (is_undecided<kMargin>(y + lane)) in_memory(dst + lane) = kAccurate(x[lane]);
}

// ---- One result from the kernel in double precision

// It errs by little more than half of a double's last place, so that rounding its result gives the
// nearest single, but for results beside the middle of two. Trying all arguments has found those:
struct Listed {
  uint32_t x, nearest;
};

typedef Status DoubleKernel(const double* src, double* dst, int32_t len);

// kListed: an array of Listed that ends with one of zeros.
template <DoubleKernel kKernel, const auto& kListed>
static float by_double(float x) {
  const uint32_t pattern = load_bits(&x);
  float nearest;
  for (const Listed* listed = kListed; listed->x; ++listed) {
    if (listed->x != pattern) continue;
    store_bits(&nearest, listed->nearest);
    return nearest;
  }
  const double argument = x;
  double y;
  kKernel(&argument, &y, 1);
  put(&nearest, y);
  return nearest;
}

#define LUX_DOUBLE_KERNEL(family) \
  extern "C" Status _noxomp_luxs##family##_64f_A53(const double* src, double* dst, int32_t len)

#endif
