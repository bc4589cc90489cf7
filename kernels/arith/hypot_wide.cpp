// SPDX-License-Identifier: MIT
//
// Hypotenuse in the steps of kernels/arith/hypot.h.
#include "kernels/wide_doubles.h"

LUX_WIDE_KERNEL(Hypot, 32f, A24) {
  return wide_pairs(
      arrays, first, last,
      [](Singles x, Singles y) {
        return all_below(x, Format<float>::kInf) && all_below(y, Format<float>::kInf);
      },
      [](Singles x, Singles y) {
        const Doubles a = as_doubles(x), b = as_doubles(y);
        return rounded(square_root(a * a + b * b));
      });
}

// Upper words, as in kernels/arith/hypot_64f.cpp.
constexpr int64_t kLow = int64_t(0x20000000) << 32, kHigh = int64_t(0x5F800000) << 32;

// Beside a larger magnitude the kernel takes one of any size, whose square the x87 unit holds; doubles do
// not.
static inline bool all_ordinary(__m256d x, __m256d y) {
  const __m256d sign = _mm256_set1_pd(-0.);
  const __m256i a = _mm256_castpd_si256(_mm256_andnot_pd(sign, x));
  const __m256i b = _mm256_castpd_si256(_mm256_andnot_pd(sign, y));
  const __m256i low = _mm256_set1_epi64x(kLow - 1), high = _mm256_set1_epi64x(kHigh);
  const __m256i zero = _mm256_setzero_si256();
  const __m256i a_counts = _mm256_cmpgt_epi64(a, low), b_counts = _mm256_cmpgt_epi64(b, low);
  const __m256i a_is_zero = _mm256_cmpeq_epi64(a, zero), b_is_zero = _mm256_cmpeq_epi64(b, zero);
  const __m256i squared = (a_counts & (b_counts | b_is_zero)) | (b_counts & a_is_zero);
  return in_all_lanes(squared & _mm256_cmpgt_epi64(high, a) & _mm256_cmpgt_epi64(high, b));
}

LUX_WIDE_KERNEL(Hypot, 64f, A53) {
  int32_t i = first;
  for (; i + 8 <= last; i += 8) {
    const __m256d x = _mm256_loadu_pd(arrays.src1 + i), y = _mm256_loadu_pd(arrays.src2 + i);
    const __m256d u = _mm256_loadu_pd(arrays.src1 + i + 4),
                  v = _mm256_loadu_pd(arrays.src2 + i + 4);
    if (!all_ordinary(x, y) || !all_ordinary(u, v)) break;
    _mm256_storeu_pd(arrays.dst1 + i, _mm256_sqrt_pd(x * x + y * y));
    _mm256_storeu_pd(arrays.dst1 + i + 4, _mm256_sqrt_pd(u * u + v * v));
  }
  return i;
}
