// SPDX-License-Identifier: MIT
//
// Inverse hyperbolic functions of single-precision arrays: ln y = k ln 2 + 2 atanh s with
// s = (y - 2^k) / (y + 2^k), where k = 0 without what cancels in y - 1:
//
//   Acosh   y = x + r, r = sqrt((x - 1)(x + 1)): y - 1 = (x - 1) + r
//   Asinh   y = |x| + r, r = sqrt(x^2 + 1): s = |x| / (r + 1)
//   Atanh   y = (1 + |x|) / (1 - |x|), half of its logarithm: s = |x|
//
// The logarithm is off by 2^-37.7 at most, all else by less than 2^-49 of the result.
#include "kernels/wide_powers.h"

constexpr uint32_t kMargin = 3 << 14;  // 2^-37.4

static inline Doubles inverse_cosine(Singles argument) {
  const Doubles one = all_doubles(1), x = as_doubles(argument), above = x - one;
  const Doubles rest = above + square_root(above * (x + one));
  const Doubles power = power_below(rest + one);
  const Doubles s = (rest + (one - power)) / (rest + (one + power));
  return fused(s, fused_polynomial<kWideLog>(s * s), exponent_of(power) * kLn2);
}

static inline Doubles inverse_sine(Singles argument) {
  const Doubles one = all_doubles(1), x = as_doubles(magnitude_of(argument));
  const Doubles root = square_root(fused(x, x, one)), y = x + root;
  const Doubles power = power_below(y);
  const DoubleMask scaled = is_less(one, power);
  const Doubles s = select(scaled, y - power, x) / (root + select(scaled, x + power, one));
  return fused(s, fused_polynomial<kWideLog>(s * s), exponent_of(power) * kLn2);
}

// k from an estimate of y.
static inline Doubles inverse_tangent(Singles argument) {
  const Singles magnitude = magnitude_of(argument), all_one = all_lanes(1.0f);
  const Singles estimate = (all_one + magnitude) * _mm256_rcp_ps(all_one - magnitude);
  const __m256i k = _mm256_srai_epi32(
      _mm256_sub_epi32(patterns_of(estimate), _mm256_set1_epi32(0x3F3504F3)), 23);  // sqrt 1/2
  const Doubles one = all_doubles(1), x = as_doubles(magnitude), power = power_of(k);
  const Doubles above = one + power, below = one - power;
  const Doubles s = fused(x, above, below) / fused(x, below, above);
  return fused(s, fused_polynomial<kWideAtanh>(s * s), as_doubles(k) * (kLn2 / 2));
}

LUX_WIDE_KERNEL(Acosh, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_from<Format<float>::kOne, Format<float>::kInf>, inverse_cosine,
                                 as_it_is);
}

LUX_WIDE_KERNEL(Asinh, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, Format<float>::kInf>,
                                 inverse_sine, with_sign);
}

LUX_WIDE_KERNEL(Atanh, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, Format<float>::kOne>,
                                 inverse_tangent, with_sign);
}
