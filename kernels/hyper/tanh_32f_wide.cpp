// SPDX-License-Identifier: MIT
//
// Hyperbolic tangent of single-precision arrays in the steps of kernels/hyper/tanh_32f.cpp.
#include "kernels/hyper/generated/tanh_32f_table.h"  // static_const_table
#include "kernels/wide_doubles.h"

constexpr uint32_t kSeries = 0x3A83126F;   // 0.001
constexpr uint32_t kOneFrom = 0x41200000;  // 10.0

static inline void tanh_block(const float* src, float* dst) {
  const auto& table = static_const_table;
  const Singles x = load_lanes(src);
  const __m256i a = _mm256_min_epi32(patterns_of(magnitude_of(x)), _mm256_set1_epi32(kOneFrom - 1));
  const Doubles u = as_doubles(_mm256_castsi256_ps(a)) + double(table.shifter);
  const Singles single = rounded(u);
  const Doubles r = u - as_doubles(single), square = r * r;
  const Indices j(patterns_of(single) & _mm256_set1_epi32(255));
  const Doubles cosh = square * table.c2 + table.c0, sinh = (square * table.s2 + table.s0) * r;
  const Doubles t = look_up(table.tanh, j);
  const Doubles y = (t * cosh + sinh) / (sinh * t + cosh);
  store_lanes(dst, either(rounded(y), sign_of(x)));
}

LUX_WIDE_KERNEL(Tanh, 32f, A24) {
  return wide_blocks(
      arrays, first, last,
      [](Singles x) { return all_within(magnitude_of(x), kSeries, Format<float>::kInf + 1); },
      tanh_block);
}
