// SPDX-License-Identifier: MIT
//
// Hyperbolic cosine and sine of single-precision arrays. With x log2 e = k + r, |r| <= 1/2,
// c = (2^r + 2^-r) / 2 and s = (2^r - 2^-r) / 2,
//
//   cosh x = (h + l) c + (h - l) s,   sinh x = (h - l) c + (h + l) s,   h = 2^(k-1), l = 2^(-k-1).
//
// c is off by 2^-46, s by 2^-37.6 at most; what cancels at |k| = 1 makes four times the roundings.
#include "kernels/wide_powers.h"
#include "kernels/hyper/hyperbolic_32f_step.h"  // kOverflow

constexpr uint32_t kMargin = 3 << 14;  // 2^-37.4

struct Exponentials {
  Doubles sum, difference, even, odd;
};

static inline Exponentials exponentials(Singles x) {
  const Split t = split(as_doubles(x), kLog2E);
  const Doubles h = times_power(0.5, t.shifted), l = over_power(0.5, t.shifted), z = t.r * t.r;
  return {h + l, h - l, fused_polynomial<kWideCosh>(z), fused_polynomial<kWideSinh>(z) * t.r};
}

static inline Doubles hyperbolic_cosine(Singles x) {
  const Exponentials e = exponentials(x);
  return fused(e.sum, e.even, e.difference * e.odd);
}

static inline Doubles hyperbolic_sine(Singles x) {
  const Exponentials e = exponentials(x);
  return fused(e.difference, e.even, e.sum * e.odd);
}

LUX_WIDE_KERNEL(Cosh, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, kOverflow>,
                                 hyperbolic_cosine, as_it_is);
}

LUX_WIDE_KERNEL(Sinh, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, kOverflow>,
                                 hyperbolic_sine, as_it_is);
}
