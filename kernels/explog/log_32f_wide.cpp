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

template <const LogTable& kTable, const LogTwo& kTwo>
static inline void log_block(const float* src, float* dst) {
  const Singles x = load_lanes(src);
  const __m256i bits = patterns_of(x);
  const Indices cell(_mm256_srli_epi32(bits, 15) & _mm256_set1_epi32(255));
  const FourDoubles c = look_up_rows(reinterpret_cast<const double(*)[4]>(kTable.cubic), cell);
  const Doubles z = as_doubles(significand_of(x));
  const Doubles e =
      as_doubles(_mm256_sub_epi32(_mm256_srli_epi32(bits, 23), _mm256_set1_epi32(127)));
  const Doubles multiple = fused(e, all_doubles(kTwo.high), e * kTwo.low);
  const Doubles y = ((c.first * z + c.second) * z + c.third) * z + c.fourth + multiple;
  store_lanes(dst, rounded(y));
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
