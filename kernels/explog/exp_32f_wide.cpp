// SPDX-License-Identifier: MIT
//
// e^x of single-precision arrays in the steps of kernels/explog/exp_32f.cpp. log2(e), which the x87 unit
// has to 64 bits, comes in two doubles; the smaller one's product with a single is exact.
#include "kernels/explog/generated/exp_32f_table.h"  // static_const_table
#include "kernels/wide_doubles.h"

constexpr uint32_t kPackedBound = 0x42AE0000;  // 87.0: results are normal below
constexpr double kLog2E = 0x1.71547652b82fep+0, kLog2ERest = 0x1.78p-56;

static inline void exp_block(const float* src, float* dst) {
  const auto& table = static_const_table;
  const Doubles x = as_doubles(load_lanes(src));
  const Doubles t = fused(x, all_doubles(kLog2E), x * kLog2ERest);
  const Doubles u = t + double(table.shifter);
  const Singles single = rounded(u);
  const Doubles r = u - as_doubles(single);
  const __m256i k = patterns_of(single);
  const Indices index(k & _mm256_set1_epi32(63));
  const Doubles y = ((r + table.d2) * r + table.d1) * look_up(table.power, index);
  // The index vanishes when k / 64 is shifted into the exponent field.
  const __m256i scale = _mm256_slli_epi32(k & _mm256_set1_epi32(-64), 17);
  const __m256i sum = _mm256_add_epi32(patterns_of(rounded(y)), scale);
  store_lanes(dst, _mm256_castsi256_ps(sum));
}

LUX_WIDE_KERNEL(Exp, 32f, A24) {
  return wide_blocks_below(arrays, kPackedBound, first, last, exp_block);
}
