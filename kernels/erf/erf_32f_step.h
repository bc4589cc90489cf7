// SPDX-License-Identifier: MIT
//
// The packed step of erf in single precision; see kernels/erf/erf_32f.cpp.
#ifndef LUX_KERNELS_ERF_ERF_32F_STEP_H
#define LUX_KERNELS_ERF_ERF_32F_STEP_H

#include "kernels/erf/generated/erf_32f_table.h"  // kCubic, kRow
#include "kernels/erf/rows_32f_step.h"

constexpr float kSaturated = 4.0f;
constexpr uint32_t kNaNs = Format<float>::kInf + 1;

template <int kTerms, int kCount>
static inline void packed_block(const float* src, float* dst) {
  const Singles x = load_elements<kCount>(src), a = smaller(magnitude_of(x), all_lanes(kSaturated));
  // Below 2^-40 the ratio is that at 0, and terms in a would be subnormal.
  const Reduced reduced = reduce(larger(a, all_lanes(0x1p-40f)));
  const Singles ratio = row_polynomial(look_up<kTerms>(kRow, reduced.shifted), reduced.r);
  const Singles y = smaller(ratio * a, all_lanes(1.0f));
  store_elements<kCount>(dst, either(y, sign_of(x)));
}

#endif
