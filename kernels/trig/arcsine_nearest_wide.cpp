// SPDX-License-Identifier: MIT
//
// Arcsine and arccosine of single-precision arrays. With s = |x| up to 1/2, and from there
// s = sqrt((1 - |x|) / 2), both are a constant and a multiple of asin s = s P(s^2). P is off by
// 2^-39.8 at most, all steps together by less than 2^-50 of the result.
#include "kernels/trig/generated/wide_trig_32f_table.h"  // kWideAsin
#include "kernels/wide_nearest.h"

constexpr double kPi = 0x1.921fb54442d18p+1, kHalfPi = kPi / 2;
constexpr uint32_t kMargin = 1 << 14;  // 2^-39

struct Reduced {
  DoubleMask outer;
  Doubles arcsine;
};

static inline Reduced reduced(Doubles a) {
  const DoubleMask outer = is_less(all_doubles(0.5), a);
  const Doubles z = select(outer, fused(a, all_doubles(-0.5), all_doubles(0.5)), a * a);
  return {outer, select(outer, square_root(z), a) * split_polynomial<kWideAsin>(z)};
}

// For magnitudes.
static inline Doubles arcsine(Singles x) {
  const Reduced r = reduced(as_doubles(magnitude_of(x)));
  return fused(r.arcsine, select(r.outer, all_doubles(-2), all_doubles(1)),
               kept(r.outer, all_doubles(kHalfPi)));
}

// pi/2 - asin x within, and from 1/2 on twice the reduced arcsine, which is what x < 0 lacks of pi.
static inline Doubles arccosine(Singles x) {
  const Doubles wide = as_doubles(x), sign = both(wide, all_doubles(-0.0));
  const Reduced r = reduced(without_sign(wide));
  const Doubles signed_arcsine = differing(r.arcsine, sign);
  const Doubles shift = kept(is_less(wide, all_doubles(0)), all_doubles(kPi));
  return select(r.outer, fused(signed_arcsine, all_doubles(2), shift),
                all_doubles(kHalfPi) - signed_arcsine);
}

// The patterns of magnitudes below 1, and 1.
constexpr uint32_t kBeyond = Format<float>::kOne + 1;

LUX_WIDE_KERNEL(Asin, 32f, A24) {
  return nearest_blocks<kMargin>(
      arrays, first, last, all_within<Format<float>::kSmallestNormal, kBeyond>, arcsine, with_sign);
}

LUX_WIDE_KERNEL(Acos, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, kBeyond>, arccosine,
                                 as_it_is);
}
