// SPDX-License-Identifier: MIT
//
// Arctangent of two single-precision arrays: with u, the smaller magnitude over the larger, a constant
// and +-u P(u^2), P off by 2^-39.0 at most, all steps together by less than 2^-50.
#include "kernels/trig/generated/wide_trig_32f_table.h"  // kWideAtan
#include "kernels/wide_nearest.h"

constexpr double kPi = 0x1.921fb54442d18p+1, kHalfPi = kPi / 2;
constexpr uint32_t kMargin = 1 << 15;  // 2^-38

// No quotient of these is subnormal.
constexpr uint32_t kSmallest = 0x20000000, kLargest = 0x5F000000;  // 2^-63, 2^63

static inline Doubles angle(Doubles y, Doubles x) {
  const Doubles sign = all_doubles(-0.0), a = without_sign(y), b = without_sign(x);
  const DoubleMask steep = is_less(b, a);
  const Doubles u = select(steep, b, a) / select(steep, a, b);
  const Doubles turned = both(differing(x, kept(steep, sign)), sign);
  const Doubles constant =
      select(steep, all_doubles(kHalfPi), kept(is_less(x, all_doubles(0)), all_doubles(kPi)));
  return fused(differing(u, turned), split_polynomial<kWideAtan>(u * u), constant);
}

LUX_WIDE_KERNEL(Atan2, 32f, A24) {
  int32_t i = first;
  for (; i + kLanes <= last; i += kLanes) {
    const Singles y = load_lanes(arrays.src1 + i), x = load_lanes(arrays.src2 + i);
    if (__builtin_expect(!all_within<kSmallest, kLargest>(y) || !all_within<kSmallest, kLargest>(x), 0)) break;
    const Doubles result = angle(as_doubles(y), as_doubles(x));
    if (__builtin_expect(!all_decided<kMargin>(result), 0)) break;
    store_lanes(arrays.dst1 + i, with_sign(rounded(result), y));
  }
  return i;
}
