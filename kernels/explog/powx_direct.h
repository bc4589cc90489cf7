// SPDX-License-Identifier: MIT
//
// Powers with one of the exponents 1, 2, 3, 4, 1/2, -1/2, -1 and -2 for all, by at most three
// operations.
//
//   x^2, x^(1/2), 1/x   one operation in the precision of the result: correctly rounded
//   32f A24, others     to 2^-62 on the x87 unit, then rounded: correctly rounded, as trying all
//                       significands of two octaves shows
//   32f A21, A11        all packed: two or three roundings, 2^-22.4
//   64f, others         at 64-bit precision: at most 3 2^-64 before the last rounding, 0.5015 ulp
//
//   ordinary elements   magnitudes from 2^low to 2^high, so that every intermediate and the result
//                       are normal numbers; under a root the positive ones
//   others              one by one as with any exponent
#ifndef LUX_KERNELS_EXPLOG_POWX_DIRECT_H
#define LUX_KERNELS_EXPLOG_POWX_DIRECT_H

#include "kernels/lanes.h"
#include "kernels/explog/pow_special.h"

// ---- x to the power kTwice / 2

template <int kTwice>
constexpr bool kIsRoot = kTwice == 1 || kTwice == -1;

// Correctly rounded by one operation.
template <int kTwice>
constexpr bool kIsOne = kTwice == 1 || kTwice == 2 || kTwice == 4 || kTwice == -2;

// Of an element, in the sign bit: not ordinary.
template <int kTwice, class E>
static inline uint32_t not_direct(const E* x) {
  constexpr int kBias = Format<E>::kBias, kPower = kIsRoot<kTwice> ? 1 : kTwice / 2;
  constexpr int kTimes = kPower < 0 ? -kPower : kPower;
  constexpr int kLow = (1 - kBias) / kTimes;
  constexpr int kHigh = (kPower < 0 ? kBias - 1 : kBias + 1) / kTimes;
  constexpr auto upper_of_power = [](int exponent) {
    return uint32_t(exponent + kBias) << (31 - (sizeof(E) == 4 ? 8 : 11));
  };
  const uint32_t word = kIsRoot<kTwice> ? upper_word(x) : upper_magnitude(x);
  return outside(word, upper_of_power(kLow), upper_of_power(kHigh));
}

static inline long double root(long double x) {
  asm("fsqrt" : "+t"(x));
  return x;
}
static inline __m128 root(__m128 x) { return _mm_sqrt_ps(x); }

template <int kTwice, class T>
static inline T direct_power(T x) {
  if constexpr (kTwice == 1) return root(x);
  if constexpr (kTwice == -1) return 1.0f / root(x);
  if constexpr (kTwice == 2) return x;
  if constexpr (kTwice == -2) return 1.0f / x;
  const T square = x * x;
  if constexpr (kTwice == 4) return square;
  if constexpr (kTwice == 6) return square * x;
  if constexpr (kTwice == 8) return square * square;
  if constexpr (kTwice == -4) return 1.0f / square;
}

// ---- On either unit

// 1/sqrt(x) of singles: an estimate of 2^-23 by the packed unit, and the series of its error in
// extended precision, which leaves 2^-62 of the root.
struct RefinedRoot {
  using Control = BothNearest<X87_EXTENDED>;
  static constexpr int kBlock = 8;

  template <int kTwice, int kCount>
  static void compute(const float* x, float* dst) {
    constexpr int kRoom = kCount == 1 ? 4 : kCount;
    alignas(16) float estimate[kRoom], base[kRoom], half[kRoom], second[kRoom];
    for (int lane = 0; lane < kCount; lane += 4) {
      const __m128 four = load_elements < kCount == 1 ? 1 : 4 > (x + lane);
      const __m128 power = direct_power<kTwice>(four);
      _mm_store_ps(base + lane, four);
      _mm_store_ps(estimate + lane, power);
      _mm_store_ps(half + lane, power * 0.5f);
      _mm_store_ps(second + lane, power * 0.375f);
    }
#pragma GCC unroll 8
    for (int lane = 0; lane < kCount; ++lane) {
      const long double y = load_extended(estimate + lane);
      const long double e = 1.0f - y * y * base[lane];
      put(dst + lane, (second[lane] * e + half[lane]) * e + y);
    }
  }
};

struct DirectPacked {
  using Control = SseNearest;
  static constexpr int kBlock = 8;

  template <int kTwice, int kCount>
  static void compute(const float* x, float* dst) {
    if constexpr (kCount == 1) {
      store_lane(dst, direct_power<kTwice>(load_all_lanes(x)));
    } else {
      const __m128 first = load_lanes(x), second = load_lanes(x + 4);
      store_lanes(dst, direct_power<kTwice>(first));
      store_lanes(dst + 4, direct_power<kTwice>(second));
    }
  }
};

template <X87Precision kPrecision>
struct DirectX87 {
  using Control = X87Nearest<kPrecision>;
  static constexpr int kBlock = 4;

  template <int kTwice, int kCount, class E>
  static void compute(const E* x, E* dst) {
    long double power[kCount];
#pragma GCC unroll 4
    for (int lane = 0; lane < kCount; ++lane)
      power[lane] = direct_power<kTwice>(load_extended(x + lane));
#pragma GCC unroll 4
    for (int lane = 0; lane < kCount; ++lane) put(dst + lane, power[lane]);
  }
};

template <class Unit, int kTwice, class E, class Special>
static Status direct(const Arrays<E>& arrays, int32_t len, Special special) {
  constexpr int kBlock = Unit::kBlock;
  const E* const x = arrays.src1;
  E* const dst = arrays.dst1;
  return run_kernel<typename Unit::Control, kBlock>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        while (i < last &&
               none_outside<kBlock>([=](int lane) { return not_direct<kTwice>(x + i + lane); })) {
          Unit::template compute<kTwice, kBlock>(x + i, dst + i);
          i += kBlock;
        }
        return i;
      },
      [=](int32_t i, Status* status) {
        if (sign_bit(not_direct<kTwice>(x + i)))
          special(arrays, i, status);
        else
          Unit::template compute<kTwice, 1>(x + i, dst + i);
      });
}

template <bool kFirst, class First, class Second>
struct Choice {
  using Type = First;
};
template <class First, class Second>
struct Choice<false, First, Second> {
  using Type = Second;
};
template <bool kFirst, class First, class Second>
using Either = typename Choice<kFirst, First, Second>::Type;

// Units::Of<kTwice> computes each of these exponents, and `any` is the kernel of all others.
// special(arrays, i, status) is called under any control words.
template <class Units, class E, class Special, class Any>
__attribute__((always_inline)) static inline Status powx(const Arrays<E>& arrays, int32_t len,
                                                         Special special, Any any) {
  constexpr auto pattern = [](E y) { return __builtin_bit_cast(typename Format<E>::Bits, y); };
  switch (load_bits(arrays.src2)) {
#define LUX_DIRECT(exponent)                           \
  case pattern(E(exponent)): {                         \
    constexpr int kTwice = int(2 * exponent);          \
    using Unit = typename Units::template Of<kTwice>;  \
    return direct<Unit, kTwice>(arrays, len, special); \
  }
    LUX_DIRECT(1)
    LUX_DIRECT(2)
    LUX_DIRECT(3)
    LUX_DIRECT(4)
    LUX_DIRECT(0.5)
    LUX_DIRECT(-0.5)
    LUX_DIRECT(-1)
    LUX_DIRECT(-2)
#undef LUX_DIRECT
    default:
      return any(OneExponent<E>{arrays.src2});
  }
}

#endif
