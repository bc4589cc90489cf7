// SPDX-License-Identifier: MIT
//
// Reciprocal cube root of single-precision arrays: an estimate y from the pattern of x, one step in
// singles by the series of (1 - e)^(-1/3), e = 1 - x y^3, which leaves less than 3e-7 of y with its
// roundings, and one in doubles, y + y e / 3, which leaves 2 e^2 / 9 or 2^-42.
#include "kernels/roots/generated/wide_roots_32f_table.h"  // kWideInvCbrtStart, kWideInvCbrt
#include "kernels/wide_nearest.h"

constexpr uint32_t kMargin = 1 << 12;  // 2^-41

static inline Doubles inverse_root(Singles x) {
  const Singles a = magnitude_of(x);
  const Singles pattern = _mm256_fnmadd_ps(_mm256_cvtepi32_ps(patterns_of(a)), all_lanes(1.0f / 3),
                                           all_lanes(kWideInvCbrtStart));
  const Singles estimate = _mm256_castsi256_ps(_mm256_cvtps_epi32(pattern));
  const Singles e = _mm256_fnmadd_ps(a * estimate, estimate * estimate, all_lanes(1.0f));
  const Doubles y =
      as_doubles(_mm256_fmadd_ps(estimate * e, fused_polynomial<kWideInvCbrt>(e), estimate));
  const Doubles rest = fused(as_doubles(a) * y, y * y, all_doubles(-1));
  return fused(y * rest, all_doubles(-1.0 / 3), y);
}

LUX_WIDE_KERNEL(InvCbrt, 32f, A24) {
  return nearest_blocks<kMargin>(arrays, first, last,
                                 all_within<Format<float>::kSmallestNormal, Format<float>::kInf>,
                                 inverse_root, with_sign);
}
