// SPDX-License-Identifier: MIT
//
// Arctangent of two single-precision arrays: with u, the smaller magnitude over the larger, a
// constant and +-u P(u^2), P off by 2^-39.0 at most, all steps together by less than 2^-50.
#include "kernels/trig/generated/wide_trig_32f_table.h"  // kWideAtan
#include "kernels/wide_nearest.h"

constexpr double kHalfPi = 0x1.921fb54442d18p+0;
constexpr uint32_t kMargin = 1 << 15;  // 2^-38

// No quotient of these is subnormal.
constexpr uint32_t kSmallest = 0x20000000, kLargest = 0x5F000000;  // 2^-63, 2^63

static inline Doubles angle(Singles y, Singles x) {
  const Singles sign = all_lanes(Format<float>::kSign), a = magnitude_of(y), b = magnitude_of(x);
  const Singles steep = is_less(b, a), turned = both(differing(x, both(steep, sign)), sign);
  const Doubles u = as_doubles(differing(smaller(a, b), turned)) / as_doubles(larger(a, b));
  // The constant's quarters of a turn.
  const Singles left = both(is_less(x, all_lanes(0.0f)), all_lanes(2.0f));
  const Doubles quarters = as_doubles(select(steep, all_lanes(1.0f), left));
  return fused(u, split_polynomial<kWideAtan>(u * u), quarters * kHalfPi);
}

static inline bool all_ordinary(Singles y, Singles x) {
  const Singles a = magnitude_of(y), b = magnitude_of(x);
  return in_all_lanes(is_from<kSmallest, kLargest>(a) & is_from<kSmallest, kLargest>(b));
}

LUX_WIDE_KERNEL(Atan2, 32f, A24) {
  return nearest_pairs<kMargin>(arrays, first, last, all_ordinary, angle, with_sign);
}
