// SPDX-License-Identifier: MIT
//
// Eight doubles in two halves: what the x87 unit computes at 53-bit precision, for eight singles at
// once. Sums and products are rounded one by one; only fused() takes two for one.
#ifndef LUX_KERNELS_WIDE_DOUBLES_H
#define LUX_KERNELS_WIDE_DOUBLES_H

#include "kernels/wide_step.h"

struct Doubles {
  __m256d low, high;
};

static inline Doubles all_doubles(double number) {
  const __m256d all = _mm256_set1_pd(number);
  return {all, all};
}

static inline Doubles operator+(Doubles a, Doubles b) { return {a.low + b.low, a.high + b.high}; }
static inline Doubles operator-(Doubles a, Doubles b) { return {a.low - b.low, a.high - b.high}; }
static inline Doubles operator*(Doubles a, Doubles b) { return {a.low * b.low, a.high * b.high}; }
static inline Doubles operator/(Doubles a, Doubles b) { return {a.low / b.low, a.high / b.high}; }
static inline Doubles operator+(Doubles a, double b) { return a + all_doubles(b); }
static inline Doubles operator-(Doubles a, double b) { return a - all_doubles(b); }
static inline Doubles operator*(Doubles a, double b) { return a * all_doubles(b); }

// a b + c, rounded once.
static inline Doubles fused(Doubles a, Doubles b, Doubles c) {
  return {_mm256_fmadd_pd(a.low, b.low, c.low), _mm256_fmadd_pd(a.high, b.high, c.high)};
}

static inline Doubles as_doubles(Singles x) {
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(x)), _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1))};
}

static inline Singles rounded(Doubles x) {
  return _mm256_set_m128(_mm256_cvtpd_ps(x.high), _mm256_cvtpd_ps(x.low));
}

// A table's entries, index[lane] one for each lane. Loads one by one are quicker than a gather, or as
// quick, on every processor tried.
static inline Doubles look_up(const double* table, const int32_t* index) {
  const auto half = [=](int lane) {
    const __m128d low = _mm_loadh_pd(_mm_load_sd(table + index[lane]), table + index[lane + 1]);
    const __m128d high =
        _mm_loadh_pd(_mm_load_sd(table + index[lane + 2]), table + index[lane + 3]);
    return _mm256_set_m128d(high, low);
  };
  return {half(0), half(4)};
}

// Where the indices of eight lanes stand.
struct alignas(32) Indices {
  int32_t lane[kLanes];
  explicit Indices(__m256i all) { _mm256_store_si256(reinterpret_cast<__m256i*>(lane), all); }
};

#endif
