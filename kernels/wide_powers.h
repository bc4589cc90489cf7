// SPDX-License-Identifier: MIT
//
// Powers of two and logarithms in doubles, to about 2^-38, for wide steps of kernels whose results
// are the nearest singles.
#ifndef LUX_KERNELS_WIDE_POWERS_H
#define LUX_KERNELS_WIDE_POWERS_H

#include "core/generated/wide_powers_table.h"
#include "kernels/wide_nearest.h"

constexpr double kLn2 = 0x1.62e42fefa39efp-1;    // 0.6931471805599453
constexpr double kLog2E = 0x1.71547652b82fep+0;  // 1.4426950408889634

typedef long long FourWords __attribute__((vector_size(32)));

struct LongWords {
  FourWords low, high;
};

static inline LongWords words_of(Doubles x) { return {FourWords(x.low), FourWords(x.high)}; }
static inline Doubles doubles_of(LongWords x) { return {__m256d(x.low), __m256d(x.high)}; }

// ---- Powers

// t is the sum of an integer k and a rest r, |r| <= 1/2; k stands in the lower bits of `shifted`.
struct Split {
  LongWords shifted;
  Doubles r;
};

constexpr double kToInteger = 0x1.8p+52;

// Of scale x, without the product's rounding: where k = 0, r is as good as x.
static inline Split split(Doubles x, double scale) {
  const Doubles shifted = fused(x, all_doubles(scale), all_doubles(kToInteger));
  return {words_of(shifted), fused(x, all_doubles(scale), all_doubles(kToInteger) - shifted)};
}

static inline Split split(Doubles t) {
  const Doubles shifted = t + kToInteger;
  return {words_of(shifted), t - (shifted - kToInteger)};
}

// factor 2^k, and factor 2^-k; normal.
static inline Doubles times_power(double factor, const LongWords& shifted) {
  const FourWords bits = FourWords(_mm256_set1_pd(factor));
  return doubles_of({bits + (shifted.low << 52), bits + (shifted.high << 52)});
}
static inline Doubles over_power(double factor, const LongWords& shifted) {
  const FourWords bits = FourWords(_mm256_set1_pd(factor));
  return doubles_of({bits - (shifted.low << 52), bits - (shifted.high << 52)});
}

static inline Doubles exp2(const Split& t) {
  return split_polynomial<kWideExp2>(t.r) * times_power(1, t.shifted);
}

// ---- Logarithms
//
// y = 2^k m, m from sqrt 1/2 to sqrt 2:  ln y = k ln 2 + 2 atanh s, s = (y - 2^k) / (y + 2^k).

// 2^k for normal numbers above 0.
static inline Doubles power_below(Doubles y) {
  const FourWords root = FourWords(_mm256_set1_pd(0x1.6a09e667f3bcdp-1)),
                  one = FourWords(_mm256_set1_pd(1)),
                  upper = FourWords(_mm256_set1_pd(-__builtin_inf()));
  const auto half = [=](__m256d y) { return __m256d(((FourWords(y) - root) & upper) + one); };
  return {half(y.low), half(y.high)};
}

// 2^k, k an integer in each lane.
static inline Doubles power_of(__m256i k) {
  const FourWords one = FourWords(_mm256_set1_pd(1));
  const auto half = [=](__m128i k) {
    return __m256d((FourWords(_mm256_cvtepi32_epi64(k)) << 52) + one);
  };
  return {half(_mm256_castsi256_si128(k)), half(_mm256_extracti128_si256(k, 1))};
}

// k of 2^k.
static inline Doubles exponent_of(Doubles power) {
  const FourWords unit = FourWords(_mm256_set1_pd(0x1p52));
  typedef unsigned long long Unsigned __attribute__((vector_size(32)));
  const auto half = [=](__m256d power) { return __m256d(FourWords(Unsigned(power) >> 52) | unit); };
  return Doubles{half(power.low), half(power.high)} - (0x1p52 + 1023);
}

#endif
