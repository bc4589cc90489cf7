// SPDX-License-Identifier: MIT
//
// Inverse error function of single-precision arrays, by the quintics of kernels/erf/erfinv_32f.cpp,
// off by 2^-38.7 at most; the steps add less than 2^-48.
#include "kernels/erf/erfinv_32f_step.h"
#include "kernels/wide_nearest.h"

constexpr uint32_t kMargin = 0x5000;  // 2^-38.7 and 2^-48

// Polynomials of four lanes; offset: of the cells' rows, in bytes.
__attribute__((always_inline)) static inline __m256d quintic(const int32_t* offset, __m256d t) {
  const FourRows c = look_up_rows(kQuintic, offset);
  const auto last_pair = [=](int lane) {
    const char* const row = reinterpret_cast<const char*>(&kQuintic[0][4]) + offset[lane];
    return _mm_load_pd(reinterpret_cast<const double*>(row));
  };
  const __m256d even = _mm256_set_m128d(last_pair(2), last_pair(0));
  const __m256d odd = _mm256_set_m128d(last_pair(3), last_pair(1));
  __m256d y = _mm256_fmadd_pd(c.first, t, c.second);
  y = _mm256_fmadd_pd(y, t, c.third);
  y = _mm256_fmadd_pd(y, t, c.fourth);
  y = _mm256_fmadd_pd(y, t, _mm256_unpacklo_pd(even, odd));
  return _mm256_fmadd_pd(y, t, _mm256_unpackhi_pd(even, odd));
}

static inline Doubles inverse(Singles x) {
  const Reduced r = reduce(x);
  const __m256i pattern = _mm256_add_epi32(patterns_of(r.w), _mm256_set1_epi32(kHalfCell));
  const __m256i cell =
      _mm256_sub_epi32(_mm256_srli_epi32(pattern, kCellShift), _mm256_set1_epi32(kFirstCell));
  static_assert(sizeof kQuintic[0] == (1 << 4) + (1 << 5));
  const Indices offset(_mm256_add_epi32(_mm256_slli_epi32(cell, 4), _mm256_slli_epi32(cell, 5)));
  const Doubles t = as_doubles(r.u);
  return {quintic(offset.lane, t.low), quintic(offset.lane + 4, t.high)};
}

LUX_WIDE_KERNEL(ErfInv, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last, all_within<kLeast, kOne>, inverse, with_sign);
}
