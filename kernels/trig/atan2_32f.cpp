// SPDX-License-Identifier: MIT
//
// Angle of the point (x, y) = (src2, src1) in single precision. With a and b the magnitudes of y
// and x and t the arctangent of their smaller quotient, the angle in the first quadrant is t, or
// pi/2 - t where a > b; left of the vertical axis it is pi less that; y gives the sign. The steps
// are in kernels/trig/arctangent_32f.h.
//
// Both coordinates normal numbers: blocks of four. Otherwise one by one, all grades alike, on the
// x87 unit, whose exponents hold every quotient.
//
// A24 is correctly rounded. The quadratics are off by 4.575e-11 of t, which is no larger than the
// angle; quotient, products, constants and sum add at most 12 times 2^-53, 1.4e-15. kMargin allows
// 4.59e-11: one angle of 649 is undecided and goes to nearest_angle.cpp. Subnormal angles are
// quotients n/d; one may be the middle of two singles, and the angle is below it. All others are
// further than 2^-48 of themselves from every middle. So the factor 1 - 2^-53, which takes every
// quotient to a double below it, decides them all.
//
// Worst errors found of the others: A21 2^-22.65 of the result, A11 2^-14.79 (sampled against 64
// bits).
#include "kernels/nearest_32f.h"
#include "kernels/screens.h"
#include "kernels/trig/arctangent_32f.h"
#include "kernels/trig/nearest_angle.h"

constexpr double kBelowOne = 1 - 0x1p-53;

// By sign, swap, and whether x is negative. Constants -0 keep the sign of a zero.
static const Cases kCases = {{kBelowOne, 0},    {-1, kPi}, {-1, kHalfPi}, {1, kHalfPi},  //
                             {-kBelowOne, -0.}, {1, -kPi}, {1, -kHalfPi}, {-1, -kHalfPi}};

constexpr uint32_t kLeftBit = 0x20000000;

// All magnitudes, less their fractions, between the two, which are excluded. Compares powers of
// two, zero and infinity only: that raises no flag and depends on no setting.
static inline bool all_between(const float* y, const float* x, float low, float high) {
  const __m128 inf = all_lanes(Format<float>::kInf);
  const __m128 a = _mm_and_ps(load_lanes(y), inf), b = _mm_and_ps(load_lanes(x), inf);
  return in_all_lanes(_mm_and_ps(_mm_cmplt_ps(all_lanes(low), _mm_min_ps(a, b)),
                                 _mm_cmplt_ps(_mm_max_ps(a, b), all_lanes(high))));
}

static inline bool all_normal(const float* y, const float* x) {
  return all_between(y, x, 0, __builtin_inff());
}

static inline bool all_moderate(const float* y, const float* x) {
  return all_between(y, x, kModerateLow, kModerateHigh);
}

// Of angles that are not zero.
static inline bool is_open(const double* angle) {
  constexpr uint32_t kNormal = (1 + 1023 - 126) << 20;  // upper word of 2^-125
  return is_undecided<kMargin>(angle) && upper_magnitude(angle) >= kNormal;
}

// Zeros, subnormals and infinities.
__attribute__((noinline, cold)) static float special_angle(const float* y_at, const float* x_at) {
  const uint32_t y = load_bits(y_at), x = load_bits(x_at);
  const uint32_t a = magnitude<float>(y), b = magnitude<float>(x);
  const bool swapped = a > b;
  const uint32_t n = swapped ? b : a, d = swapped ? a : b;
  float smaller, larger, cell, word;
  store_bits(&smaller, n);
  store_bits(&larger, d);
  double u = 0;
  if (n == d && n != 0)
    u = 1;
  else if (d != Format<float>::kInf && n != 0)
    u = double(smaller) / larger;
  put(&cell, u + Grid<kCells>::kShifter);
  store_bits(&word, (y & Format<float>::kSign) | uint32_t(swapped) << 30 | (x >> 31) << 29);
  double angle;
  float nearest;
  inverse<kCells>(kQuadratic, kCases, u, &cell, &word, &angle, &nearest);
  return u > 0 && u < 1 && is_open(&angle) ? noxs_nearest_angle(y_at, x_at) : nearest;
}

// block(y, x, to): whether all of a block are normal numbers, whose angles it then stores.
template <Unit kUnit, auto kStep, class Block, class One>
static inline Status angle(const float* src1, const float* src2, float* dst, int32_t len,
                           Block block, One element) {
  const Arrays<float> arrays = {src1, src2, dst, dst};
  return run_kernel<BothNearest<X87_DOUBLE>, 4>(
      arrays, len,
      with_wide_step<kUnit, kStep, kUnit != Unit::kSse>(arrays, len,
                                                        [=](int32_t i, int32_t last) {
                                                          while (i < last &&
                                                                 block(src1 + i, src2 + i, dst + i))
                                                            i += 4;
                                                          return i;
                                                        }),
      [=](int32_t i, Status*) {
        const uint32_t y = load_bits(src1 + i), x = load_bits(src2 + i);
        if (is_normal(src1 + i) && is_normal(src2 + i))
          element(src1 + i, src2 + i, dst + i);
        else if (magnitude<float>(y) > Format<float>::kInf)
          store_bits(dst + i, quieted<float>(y));
        else if (magnitude<float>(x) > Format<float>::kInf)
          store_bits(dst + i, quieted<float>(x));
        else
          in_memory(dst + i) = special_angle(src1 + i, src2 + i);
      });
}

template <int kCount>
__attribute__((noinline, cold)) static void settle(const float* y, const float* x,
                                                   const double (&angle)[kCount],
                                                   float (&nearest)[kCount]) {
  for (int lane = 0; lane < kCount; ++lane)
    if (is_open(angle + lane)) nearest[lane] = noxs_nearest_angle(y + lane, x + lane);
}

template <int kCount>
static inline void block(const float* y, const float* x, float* dst) {
  double angle[kCount];
  float nearest[kCount];
  const Point p = load_point<kCount>(y, x);
  const __m128 words = _mm_or_ps(sign_of(p.y), _mm_and_ps(is_left(p), all_lanes(kLeftBit)));
  const __m128 n = _mm_max_ps(p.ratio.n, least_beside(p.ratio.d));
  arctangent_block(kCases, p.ratio, n / p.ratio.d, words, angle, nearest);
  if (any_undecided<kMargin>(angle)) settle(y, x, angle, nearest);
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i) store_bits(dst + i, load_bits(nearest + i));
}

LUX_KERNEL(Atan2, 32f, A24, 2_1) {
  return angle<Unit::kBoth, &WideLibrary::Atan2_32f_A24>(
      src1, src2, dst, len,
      [](const float* y, const float* x, float* to) {
        const bool ordinary = all_normal(y, x);
        if (ordinary) block<4>(y, x, to);
        return ordinary;
      },
      [](const float* y, const float* x, float* to) { block<1>(y, x, to); });
}

template <const auto& kP, auto kStep>
static inline Status packed_angle(const float* src1, const float* src2, float* dst, int32_t len) {
  return angle<Unit::kSse, kStep>(
      src1, src2, dst, len,
      [](const float* y, const float* x, float* to) {
        if (__builtin_expect(all_moderate(y, x), 1)) {
          angle_block<kP, 4, true>(y, x, to);
          return true;
        }
        const bool ordinary = all_normal(y, x);
        if (ordinary) angle_block<kP, 4, false>(y, x, to);
        return ordinary;
      },
      [](const float* y, const float* x, float* to) { angle_block<kP, 1, false>(y, x, to); });
}

LUX_KERNEL(Atan2, 32f, A21, 2_1) {
  return packed_angle<kAtan21, &WideLibrary::Atan2_32f_A21>(src1, src2, dst, len);
}
LUX_KERNEL(Atan2, 32f, A11, 2_1) {
  return packed_angle<kAtan11, &WideLibrary::Atan2_32f_A11>(src1, src2, dst, len);
}
