// SPDX-License-Identifier: MIT
//
// Cube root of single-precision arrays in the steps of kernels/roots/cbrt_32f.h. The power of two, whose
// exponent is a third of x's, is put together: its fraction is a factor before the rounding to single, the
// rest of the exponent is added behind it, which is the same, since all results are normal numbers.
#include "kernels/roots/generated/cbrt_32f_table.h"  // static_const_table
#include "kernels/wide_doubles.h"

struct alignas(32) Row {
  double c2, c1, c0, unused;
};

struct Rows {
  Row of[64];
  constexpr Rows() : of{} {
    for (int j = 0; j < 64; ++j)
      of[j] = {static_const_table.c2[j], static_const_table.c1[j], static_const_table.c0[j], 0};
  }
};
static constexpr Rows kRows;

// By the biased exponents 127, 128 and 129: 1, 2^(1/3) and 2^(2/3).
static constexpr const double* kFactors = static_const_table.scaled_factor + 127;

// From the lowest bits of 0, 1 or 2 in each lane.
static inline __m256d factor_of(__m128i remainder) {
  const auto bit = [=](int shift) {
    return _mm256_castsi256_pd(_mm256_cvtepi32_epi64(_mm_slli_epi32(remainder, shift)));
  };
  const __m256d low =
      _mm256_blendv_pd(_mm256_set1_pd(kFactors[0]), _mm256_set1_pd(kFactors[1]), bit(31));
  return _mm256_blendv_pd(low, _mm256_set1_pd(kFactors[2]), bit(30));
}

static inline __m128 cbrt_half(__m128 significands, __m128i remainder, const int32_t* offset) {
  const FourRows c = look_up_rows(kRows.of, offset);
  const __m256d m = _mm256_cvtps_pd(significands);
  return _mm256_cvtpd_ps(((c.first * m + c.second) * m + c.third) * factor_of(remainder));
}

static inline void cbrt_block(const float* src, float* dst) {
  const Singles x = load_lanes(src), z = significand_of(x);
  const __m256i bits = patterns_of(magnitude_of(x));
  const Indices offset(_mm256_srli_epi32(bits, 12) & _mm256_set1_epi32(63 * 32));
  // E - 127 = 3 (third - 43) + remainder
  const __m256i e = _mm256_add_epi32(_mm256_srli_epi32(bits, 23), _mm256_set1_epi32(2));
  const __m256i third =
      _mm256_srli_epi32(_mm256_mulhi_epu16(e, _mm256_set1_epi32((1 << 17) / 3 + 1)), 1);
  const __m256i remainder =
      _mm256_sub_epi32(e, _mm256_add_epi32(third, _mm256_add_epi32(third, third)));
  const __m128 low =
      cbrt_half(_mm256_castps256_ps128(z), _mm256_castsi256_si128(remainder), offset.lane);
  const __m128 high = cbrt_half(_mm256_extractf128_ps(z, 1), _mm256_extracti128_si256(remainder, 1),
                                offset.lane + 4);
  const __m256i exponent = _mm256_slli_epi32(_mm256_sub_epi32(third, _mm256_set1_epi32(43)), 23);
  const __m256i y = _mm256_add_epi32(patterns_of(_mm256_set_m128(high, low)), exponent);
  store_lanes(dst, either(_mm256_castsi256_ps(y), sign_of(x)));
}

LUX_WIDE_KERNEL(Cbrt, 32f, A24) {
  return wide_blocks(
      arrays, first, last,
      [](Singles x) {
        return all_within(magnitude_of(x), Format<float>::kSmallestNormal, Format<float>::kInf);
      },
      cbrt_block);
}
