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
static inline Doubles operator+(double a, Doubles b) { return all_doubles(a) + b; }
static inline Doubles operator-(double a, Doubles b) { return all_doubles(a) - b; }
static inline Doubles operator*(double a, Doubles b) { return all_doubles(a) * b; }
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

// Where the indices of eight lanes stand.
struct alignas(32) Indices {
  int32_t lane[kLanes];
  explicit Indices(__m256i all) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(lane), all);
    asm("" : "+m"(lane));  // the compiler would take them from the register, one after the other
  }
};

// A table's entries, index[lane] one for each lane. Loads one by one are quicker than a gather, or as
// quick, on every processor tried.
static inline Doubles look_up(const double* table, const Indices& at) {
  const int32_t* const index = at.lane;
  const auto half = [=](int lane) {
    const __m128d low = _mm_loadh_pd(_mm_load_sd(table + index[lane]), table + index[lane + 1]);
    const __m128d high =
        _mm_loadh_pd(_mm_load_sd(table + index[lane + 2]), table + index[lane + 3]);
    return _mm256_set_m128d(high, low);
  };
  return {half(0), half(4)};
}

// Rows of four doubles, offset[lane] bytes behind the first one, for each of four lanes, turned. Halves of a row are joined in loads.
struct FourRows {
  __m256d first, second, third, fourth;
};

static inline FourRows look_up_rows(const void* rows, const int32_t* offset) {
  const auto row = [=](int lane) {
    return reinterpret_cast<const double*>(static_cast<const char*>(rows) + offset[lane]);
  };
  const double *const r0 = row(0), *const r1 = row(1), *const r2 = row(2), *const r3 = row(3);
  const __m256d a = _mm256_set_m128d(_mm_load_pd(r2), _mm_load_pd(r0));
  const __m256d b = _mm256_set_m128d(_mm_load_pd(r3), _mm_load_pd(r1));
  const __m256d c = _mm256_set_m128d(_mm_load_pd(r2 + 2), _mm_load_pd(r0 + 2));
  const __m256d d = _mm256_set_m128d(_mm_load_pd(r3 + 2), _mm_load_pd(r1 + 2));
  return {_mm256_unpacklo_pd(a, b), _mm256_unpackhi_pd(a, b), _mm256_unpacklo_pd(c, d),
          _mm256_unpackhi_pd(c, d)};
}

// Of integers.
static inline Doubles as_doubles(__m256i x) {
  return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(x)),
          _mm256_cvtepi32_pd(_mm256_extracti128_si256(x, 1))};
}

// The nearest integers.
static inline __m256i nearest_integers(Doubles x) {
  return _mm256_set_m128i(_mm256_cvtpd_epi32(x.high), _mm256_cvtpd_epi32(x.low));
}

static inline Doubles square_root(Doubles x) {
  return {_mm256_sqrt_pd(x.low), _mm256_sqrt_pd(x.high)};
}

#endif
