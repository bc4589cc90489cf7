// SPDX-License-Identifier: MIT
#include "kernels/hyper/log1p_32f_step.h"
#include "kernels/wide_step.h"

// As all_ordinary of kernels/hyper/log1p_domain.h.
static inline bool ordinary(PackedAcosh, Singles x) {
  return all_within(x, PackedAcosh::kFirst, PackedAcosh::kBeyond);
}

template <class Family>
static inline bool ordinary(Family, Singles x) {
  return all_below(x, Family::kBeyond) && none_subnormal(x);
}

#define LOG1P(family, grade, polynomial)                                              \
  LUX_WIDE_KERNEL(family, 32f, grade) {                                               \
    return wide_blocks(                                                               \
        arrays, first, last, [](Singles x) { return ordinary(Packed##family(), x); }, \
        packed_block<Packed##family, polynomial, kLanes>);                            \
  }
LOG1P(Acosh, A21, kLong)
LOG1P(Acosh, A11, kShort)
LOG1P(Asinh, A21, kLong)
LOG1P(Asinh, A11, kShort)
LOG1P(Atanh, A21, kLong)
LOG1P(Atanh, A11, kShort)
