// SPDX-License-Identifier: MIT
//
// Arctangent of single-precision arrays: u P(u^2) with u = |x| up to 1, and pi/2 - u P(u^2) with
// u = 1/|x| beyond. P is off by 2^-39.0 at most, all steps together by less than 2^-50.
#include "kernels/trig/generated/wide_trig_32f_table.h"  // kWideAtan
#include "kernels/wide_nearest.h"

constexpr double kHalfPi = 0x1.921fb54442d18p+0;
constexpr uint32_t kMargin = 1 << 15;  // 2^-38

static inline Doubles arctangent(Singles x) {
  const Doubles one = all_doubles(1), a = as_doubles(magnitude_of(x));
  const DoubleMask beyond = is_less(one, a);
  const Doubles u = smaller(a, one) / larger(a, one);
  return fused(differing(u, kept(beyond, all_doubles(-0.0))), split_polynomial<kWideAtan>(u * u),
               kept(beyond, all_doubles(kHalfPi)));
}

LUX_WIDE_KERNEL(Atan, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, Format<float>::kInf>,
                                 arctangent, with_sign);
}
