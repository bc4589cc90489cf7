// SPDX-License-Identifier: MIT
//
// Arctangent of two single-precision arrays: with u, the smaller magnitude over the larger, a
// constant and +-u P(u^2), P off by 2^-39.0 at most, all steps together by less than 2^-50.
#include "kernels/trig/generated/wide_trig_32f_table.h"  // kWideAtan
#include "kernels/wide_nearest.h"

constexpr double kPi = 0x1.921fb54442d18p+1, kHalfPi = kPi / 2;
constexpr uint32_t kMargin = 1 << 15;  // 2^-38

// No quotient of these is subnormal.
constexpr uint32_t kSmallest = 0x20000000, kLargest = 0x5F000000;  // 2^-63, 2^63

static inline Doubles angle(Singles src1, Singles src2) {
  const Doubles y = as_doubles(src1), x = as_doubles(src2), a = without_sign(y),
                b = without_sign(x);
  const DoubleMask steep = is_less(b, a);
  const Doubles u = smaller(a, b) / larger(a, b);
  const Doubles turned = both(differing(x, kept(steep, all_doubles(-0.0))), all_doubles(-0.0));
  const Doubles constant =
      select(steep, all_doubles(kHalfPi), kept(is_less(x, all_doubles(0)), all_doubles(kPi)));
  return fused(differing(u, turned), split_polynomial<kWideAtan>(u * u), constant);
}

LUX_WIDE_KERNEL(Atan2, 32f, A24) {
  return nearest_pairs<kMargin>(
      arrays, first, last,
      [](Singles y, Singles x) {
        return all_within<kSmallest, kLargest>(y) && all_within<kSmallest, kLargest>(x);
      },
      angle, with_sign);
}
