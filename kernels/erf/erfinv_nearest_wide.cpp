// SPDX-License-Identifier: MIT
//
// Inverse error function of single-precision arrays, by the quintics of kernels/erf/erfinv_32f.cpp, off
// by 2^-38.7 at most; the steps add less than 2^-48.
#include "kernels/erf/erfinv_32f_step.h"
#include "kernels/wide_nearest.h"

constexpr uint32_t kMargin = 0x5000;  // 2^-38.7 and 2^-48

// Columns 2 kPair and 2 kPair + 1 of the rows of four lanes.
struct Columns {
  __m256d first, second;
};

static inline Columns columns(const double* const* row, int column) {
  const auto pairs = [=](int lane) {
    return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(row[lane] + column)),
                                _mm_loadu_pd(row[lane + 2] + column), 1);
  };
  const __m256d even = pairs(0), odd = pairs(1);
  return {_mm256_unpacklo_pd(even, odd), _mm256_unpackhi_pd(even, odd)};
}

static inline __m256d quintic(const double* const* row, __m256d t) {
  const Columns a = columns(row, 0), b = columns(row, 2), c = columns(row, 4);
  __m256d y = _mm256_fmadd_pd(a.first, t, a.second);
  y = _mm256_fmadd_pd(y, t, b.first);
  y = _mm256_fmadd_pd(y, t, b.second);
  y = _mm256_fmadd_pd(y, t, c.first);
  return _mm256_fmadd_pd(y, t, c.second);
}

static inline Doubles inverse(Singles x) {
  const Reduced r = reduce(x);
  const Indices cells(_mm256_sub_epi32(
      _mm256_srli_epi32(_mm256_add_epi32(patterns_of(r.w), _mm256_set1_epi32(kHalfCell)),
                        kCellShift),
      _mm256_set1_epi32(kFirstCell)));
  const double* row[kLanes];
#pragma GCC unroll 8
  for (int lane = 0; lane < kLanes; ++lane) row[lane] = kQuintic[cells.lane[lane]];
  const Doubles t = as_doubles(r.u);
  return {quintic(row, t.low), quintic(row + 4, t.high)};
}

LUX_WIDE_KERNEL(ErfInv, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last, all_within<kLeast, kOne>, inverse,
                                 with_sign);
}
