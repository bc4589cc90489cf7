// SPDX-License-Identifier: MIT
//
// What the inverse hyperbolic functions of single-precision arrays share: each is ln(1 + s) for an
// s >= 0 of its own that has no cancellation.
//
// A24, on the x87 unit at 64-bit precision, intermediates as doubles:
//
//   e and i from the exponent and the upper nine fraction bits of 1 + s as a single,
//   u = s 2^-e + (2^-e - 1),  ln(1 + s) = ((c3[i] u + c2[i]) u + c1[i]) u + c0[i] + e ln 2.
//
//   c0[0] = 0 and u = s where e = 0, so the relative error of s stays. The
//   cubics are off by at most 2^-34 of the logarithm. Blocks of eight in two passes: one chain from
//   root or quotient to result is longer than the processor looks ahead.
//
// A21 and A11, packed single precision:
//
//   E = 2^e with sqrt(1/2) <= (1 + s) / E < sqrt(2),  t = (s + (1 - E)) / (s + (1 + E)),
//   ln(1 + s) = 2 t + t^3 P(t^2) + e ln 2, |t| < 0.1716.
//
//   For E = 1 that is s / (s + 2): nothing is lost next to 0. Arguments of the odd functions below
//   2^-12 pass as they are, so that nothing depends on how the processor treats subnormal operands.
#ifndef LUX_KERNELS_HYPER_LOG1P_32F_H
#define LUX_KERNELS_HYPER_LOG1P_32F_H

#include "kernels/frame.h"
#include "kernels/nearest_32f.h"
#include "kernels/hyper/log1p_32f_step.h"
#include "kernels/hyper/log1p_domain.h"

// A family has its domain, kScale, argument(x) for a magnitude, which is s, as an extended number
// and packed, special(arrays, i, status) for what is out of bounds, kAccurate(x), and kWideStep of A24.
template <class Family, class Control, int32_t kBlock, auto kStep, class Block, class One>
static inline Status log1p_32f(const float* src, float* dst, int32_t len, Block block,
                               One element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, kBlock>(
      arrays, len,
      with_wide_step<kUnitOf<Control>, kStep, kUnitOf<Control> != Unit::kSse>(
          arrays, len,
          [=](int32_t i, int32_t last) {
            for (; i < last; i += kBlock) {
              if (!all_ordinary<Family, kBlock>(src + i)) break;
              block(src + i, dst + i);
            }
            _mm_empty();  // after the packed conversions
            return i;
          }),
      [&](int32_t i, Status* status) {
        if (all_ordinary<Family, 1>(src + i)) {
          element(src + i, dst + i);
          _mm_empty();
        } else {
          Family::special(arrays, i, status);
        }
      });
}

// ---- x87

static inline long double log_of(const Cubic& c, long double u) {
  return ((c.c3 * u + c.c2) * u + c.c1) * u + c.c0;
}

// 1 as a memory operand, which costs nothing: as a constant it would be loaded and copied.
static inline float one_in_memory() {
  static const float one = 1;
  const float* at = &one;
  asm("" : "+r"(at));
  return *at;
}

static inline long double log1p_of(const double* s, const float* w) {
  const uint32_t k = load_bits(w);
  const Exponent& e = kExponent[(k >> 23) - 127];
  return log_of(kCubic[k >> 14 & 511], *s * (long double)e.scale + e.offset) + e.log;
}

// The first cubic is off by 2^-34.003 of the logarithm, the others by less than 2^-36; everything else
// together by less than 2^-42 where a result comes near the middle of two singles.
constexpr uint32_t kMargin = 0x80400;  // 2^-33.997

template <class Family, int kCount>
static inline void log1p_block(const float* src, float* dst) {
  constexpr int kLoad = kCount == 1 ? 1 : 4;
  alignas(16) float x[kCount + 4 - kLoad], a[kCount + 4 - kLoad];
  double s[kCount], y[kCount];
  float w[kCount];
  for (int lane = 0; lane < kCount; lane += kLoad) {
    const __m128 loaded = load_elements<kLoad>(src + lane);
    _mm_store_ps(x + lane, loaded);
    _mm_store_ps(a + lane, _mm_andnot_ps(all_lanes(Family::kSigned), loaded));
  }
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) {
    const long double argument = Family::argument((long double)a[lane]);
    put(w + lane, argument + one_in_memory());
    put(s + lane, argument);
  }
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) {
    const uint32_t sign = load_bits(src + lane) & Family::kSigned;
    long double result = log1p_of(s + lane, w + lane);
    if (Family::kScale != 1) result *= Family::kScale;
    put_copy(y + lane, result);
    put(dst + lane, result);
    if (Family::kSigned) set_upper_bits(dst + lane, sign);
  }
  if (any_undecided<kMargin>(y)) settle<kMargin, Family::kAccurate>(y, x, dst);
}

template <class Family>
static inline Status log1p_a24(const float* src, float* dst, int32_t len) {
  return log1p_32f<Family, X87Nearest<X87_EXTENDED>, 8, Family::kWideStep>(
      src, dst, len, [](const float* x, float* y) { log1p_block<Family, 8>(x, y); },
      [](const float* x, float* y) { log1p_block<Family, 1>(x, y); });
}

// ln(2 a) of a finite number from 1 on, in every grade: the magnitude of kAccurate(a) where the
// cubic leaves it undecided.
template <float (*kAccurate)(float)>
static inline float log_twice(uint32_t a) {
  float m;
  store_bits(&m, (a & Format<float>::kFraction) | Format<float>::kOne);
  const int32_t e = int32_t(a >> 23) - 126;
  const X87Nearest<X87_EXTENDED> control;
  const long double result = log_of(kCubic[a >> 14 & 511], m - 1.0L) + e * (long double)kLn2;
  double y[1];
  float nearest, x;
  put_copy(y, result);
  put(&nearest, result);
  store_bits(&x, a);
  if (any_undecided<kMargin>(y)) settle<kMargin, kAccurate>(y, &x, &nearest);
  control.leave();
  return nearest;
}

// ---- Packed

template <class Family, const auto& kP, auto kStep>
static inline Status log1p_packed(const float* src, float* dst, int32_t len) {
  return log1p_32f<Family, SseNearest, 4, kStep>(
      src, dst, len, [](const float* x, float* y) { packed_block<Family, kP, 4>(x, y); },
      [](const float* x, float* y) { packed_block<Family, kP, 1>(x, y); });
}

#define LOG1P_KERNELS_32F(family)                                                       \
  LUX_KERNEL(family, 32f, A24, 1_1) { return log1p_a24<family>(src, dst, len); }        \
  LUX_KERNEL(family, 32f, A21, 1_1) {                                                   \
    return log1p_packed<family, kLong, &WideLibrary::family##_32f_A21>(src, dst, len);  \
  }                                                                                     \
  LUX_KERNEL(family, 32f, A11, 1_1) {                                                   \
    return log1p_packed<family, kShort, &WideLibrary::family##_32f_A11>(src, dst, len); \
  }

#endif
