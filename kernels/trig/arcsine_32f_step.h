// SPDX-License-Identifier: MIT
//
// The packed steps of arcsine and arccosine in single precision; see kernels/trig/arcsine_32f.h.
#ifndef LUX_KERNELS_TRIG_ARCSINE_32F_STEP_H
#define LUX_KERNELS_TRIG_ARCSINE_32F_STEP_H

#include "kernels/trig/generated/asin_32f_table.h"  // kQuadratic, kAsin21, kAsin11
#include "kernels/trig/inverse_32f_step.h"

constexpr uint32_t kBeyondOne = Format<float>::kOne + 1;
constexpr float kPasses = 0x1p-12f;

struct Folded {
  Singles a, mask, z, root;  // a = |x|, and the lanes where it is above 1/2
};

static inline Folded fold(Singles x) {
  const Singles half = all_lanes(0.5f), a = magnitude_of(x);
  const Singles z = (1.0f - a) * half;
  return {a, is_less(half, a), z, square_root(z)};
}

static inline Singles passes(const Folded& f) { return is_less(f.a, all_lanes(kPasses)); }

// asin |x|, or asin of the folded u. Below 2^-30 something else decides the result, and a larger
// argument keeps products from underflowing: `small` says whether any is below kPasses.
template <const auto& kP>
static inline Singles packed_arcsine(const Folded& f, bool small) {
  Singles a = f.a;
  if (small) a = larger(a, all_lanes(0x1p-30f));
  return odd_polynomial<kP>(select(f.mask, f.root, a), select(f.mask, f.z, a * a));
}

// The functions themselves from the packed arcsine y.
static inline Singles combine_acos(Singles x, const Folded& f, Singles y, bool) {
  const Singles sign = sign_of(x);
  const Singles constant = select(f.mask, both(is_less(x, all_lanes(0.0f)), all_lanes(kSinglePi)),
                                  all_lanes(float(kHalfPi)));
  const Singles y1 = select(f.mask, y + y, differing(y, all_lanes(Format<float>::kSign)));
  return constant + differing(y1, sign);
}

static inline Singles combine_asin(Singles x, const Folded& f, Singles y, bool small) {
  const Singles folded = all_lanes(float(kHalfPi)) - (y + y);
  Singles result = select(f.mask, folded, y);
  if (small) result = select(passes(f), f.a, result);
  return either(result, sign_of(x));
}

// kCombine(x, f, y, small): the result from the packed arcsine y.
template <const auto& kP, auto kCombine, int kCount>
static inline void packed_block(const float* src, float* dst) {
  const Singles x = load_elements<kCount>(src);
  const Folded f = fold(x);
  const bool small = __builtin_expect(in_any_lane(passes(f)), 0);
  store_elements<kCount>(dst, kCombine(x, f, packed_arcsine<kP>(f, small), small));
}

#endif
