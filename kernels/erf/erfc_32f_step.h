// SPDX-License-Identifier: MIT
//
// The packed step of erfc in single precision; see kernels/erf/erfc_32f.cpp.
#ifndef LUX_KERNELS_ERF_ERFC_32F_STEP_H
#define LUX_KERNELS_ERF_ERFC_32F_STEP_H

#include "kernels/erf/generated/erfc_32f_table.h"  // kSeptic, kRow, kPower21, kPower11
#include "kernels/erf/rows_32f_step.h"

constexpr uint32_t kNormal = 0x41130000;  // 9.1875: results are normal below

// Below 2^-40 every grade gives 1, and terms in |x| would be subnormal.
static inline Singles magnitude_from_least(Singles x) {
  return larger(magnitude_of(x), all_lanes(0x1p-40f));
}

template <int kTerms, const auto& kPower, int kCount>
static inline void packed_block(const float* src, float* dst) {
  const Singles x = load_elements<kCount>(src), a = magnitude_from_least(x);
  const Reduced reduced = reduce(a);
  const Singles r = reduced.r;
  const Coefficients<kTerms> row = look_up<kTerms>(kRow, reduced.shifted);
  const Singles w = r * (a + (a - r));
  const Singles power = polynomial<kPower>(w) * w + 1.0f;
  const Singles rest = row_polynomial(row, r, 1) * r + 1.0f;
  const Singles y = row.c[0] * power * rest;
  const Singles negative = is_less(x, all_lanes(0.0f));
  store_elements<kCount>(dst, differing(y, sign_of(negative)) + both(negative, all_lanes(2.0f)));
}

#endif
