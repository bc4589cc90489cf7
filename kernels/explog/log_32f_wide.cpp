// SPDX-License-Identifier: MIT
//
// Logarithms of single-precision arrays in the steps of kernels/explog/log_32f.h. The multiples of log 2 are
// computed, from two doubles and rounded once, as they stand in the tables.
#include "kernels/explog/generated/ln_32f_table.h"
#include "kernels/explog/generated/log10_32f_table.h"
#include "kernels/wide_doubles.h"

struct LogTwo {
  double high, low;
};

// Four at a time: with eight the coefficients would not stay in registers.
template <const LogTable& kTable, const LogTwo& kTwo>
static inline __m128 log_half(__m128 significands, __m128i exponents, const int32_t* cell) {
  const FourRows c = look_up_rows(kTable.cubic, cell);
  const __m256d z = _mm256_cvtps_pd(significands), e = _mm256_cvtepi32_pd(exponents);
  const __m256d multiple =
      _mm256_fmadd_pd(e, _mm256_set1_pd(kTwo.high), e * _mm256_set1_pd(kTwo.low));
  return _mm256_cvtpd_ps(((c.first * z + c.second) * z + c.third) * z + c.fourth + multiple);
}

template <const LogTable& kTable, const LogTwo& kTwo>
__attribute__((always_inline)) static inline void log_block(const float* src, float* dst) {
  const Singles x = load_lanes(src);
  const __m256i bits = patterns_of(x);
  const Indices cell(_mm256_srli_epi32(bits, 10) & _mm256_set1_epi32(255 * 32));
  const Singles z = significand_of(x);
  const __m256i e = _mm256_sub_epi32(_mm256_srli_epi32(bits, 23), _mm256_set1_epi32(127));
  const __m128 low =
      log_half<kTable, kTwo>(_mm256_castps256_ps128(z), _mm256_castsi256_si128(e), cell.lane);
  const __m128 high = log_half<kTable, kTwo>(_mm256_extractf128_ps(z, 1),
                                             _mm256_extracti128_si256(e, 1), cell.lane + 4);
  store_lanes(dst, _mm256_set_m128(high, low));
}

template <const LogTable& kTable, const LogTwo& kTwo>
static inline int32_t log_blocks(const Arrays<float>& arrays, int32_t first, int32_t last) {
  return wide_blocks(
      arrays, first, last,
      [](Singles x) { return all_within(x, Format<float>::kSmallestNormal, Format<float>::kInf); },
      log_block<kTable, kTwo>);
}

static constexpr LogTwo kLn2 = {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};
static constexpr LogTwo kLog10Of2 = {0x1.34413509f79ffp-2, -0x1.9dc1da994fd21p-59};

LUX_WIDE_KERNEL(Ln, 32f, A24) {
  return log_blocks<table_ln_32f::static_const_table, kLn2>(arrays, first, last);
}
LUX_WIDE_KERNEL(Log10, 32f, A24) {
  return log_blocks<table_log10_32f::static_const_table, kLog10Of2>(arrays, first, last);
}
