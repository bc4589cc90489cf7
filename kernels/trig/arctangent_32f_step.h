// SPDX-License-Identifier: MIT
//
// The packed steps of the arctangent and of the angle of a point in single precision; see
// kernels/trig/arctangent_32f.h.
#ifndef LUX_KERNELS_TRIG_ARCTANGENT_32F_STEP_H
#define LUX_KERNELS_TRIG_ARCTANGENT_32F_STEP_H

#include "kernels/trig/generated/atan_32f_table.h"  // kQuadratic, kAtan21, kAtan11
#include "kernels/trig/inverse_32f_step.h"

constexpr uint32_t kNaNs = Format<float>::kInf + 1;

struct Ratio {
  Singles n, d, swapped;  // n <= d, the lanes where n is not the first source
};

static inline Ratio ratio_of(Singles a, Singles b) {
  const Singles swapped = is_less(b, a);
  return {select(swapped, b, a), select(swapped, a, b), swapped};
}

// Where the result is the argument or the quotient itself.
static inline Singles is_tiny(Singles x) { return is_less(x, all_lanes(0x1p-12f)); }

template <const auto& kP>
static inline Singles packed_arctangent(Singles q) {
  return odd_polynomial<kP>(q, q * q);
}

// The angle in the first quadrant from y, the angle between the point and the nearer axis.
static inline Singles from_axis(const Ratio& r, Singles y) {
  return select(r.swapped, all_lanes(float(kHalfPi)) - y, y);
}

// ---- Arctangent

// Beyond these the arctangent is the argument, or rounds to pi/2. Clamped to them, neither
// quotients nor products underflow.
constexpr float kSmallest = 0x1p-30f, kLargest = 0x1p+30f;

template <const auto& kP, int kCount>
static inline void atan_block(const float* src, float* dst) {
  const Singles x = load_elements<kCount>(src);
  const Singles a = magnitude_of(x), tiny = is_tiny(a);
  const Singles smallest = all_lanes(kSmallest), largest = all_lanes(kLargest);
  const bool extreme = __builtin_expect(in_any_lane(either(tiny, is_less(largest, a))), 0);
  Singles clamped = a;
  if (extreme) clamped = smaller(larger(a, smallest), largest);
  const Ratio r = ratio_of(clamped, all_lanes(1.0f));
  Singles y = from_axis(r, packed_arctangent<kP>(r.n / r.d));
  if (extreme) y = select(tiny, a, y);
  store_elements<kCount>(dst, either(y, sign_of(x)));
}

// ---- The angle of a point

// Between powers of two that exclude these magnitudes no quotient is below 2^-30, and no step underflows.
constexpr float kModerateLow = 0x1p-17f, kModerateHigh = 0x1p+13f;

// What a smaller magnitude may be raised to, beside d, without a change of angles of pi/2 or pi
// that it is taken from, nor of the cell: at most 2^-36 d, and no more than the smallest normal
// number where that underflows. The quotient does not underflow then.
static inline Singles least_beside(Singles d) { return larger(d, all_lanes(0x1p-90f)) * 0x1p-36f; }

struct Point {
  Singles x, y;
  Ratio ratio;
};

static inline Singles is_left(const Point& p) { return is_less(p.x, all_lanes(0.0f)); }

template <int kCount>
static inline Point load_point(const float* y, const float* x) {
  const Singles a = load_elements<kCount>(y), b = load_elements<kCount>(x);
  return {b, a, ratio_of(magnitude_of(a), magnitude_of(b))};
}

template <const auto& kP, int kCount, bool kIsModerate>
static inline void angle_block(const float* y, const float* x, float* dst) {
  const Point p = load_point<kCount>(y, x);
  const Ratio& r = p.ratio;
  const Singles left = is_left(p);
  // Only an angle that is the quotient itself may be lost in underflow.
  Singles n = r.n;
  if (!kIsModerate) n = larger(n, both(either(left, r.swapped), least_beside(r.d)));
  const Singles q = n / r.d;
  const Singles u = kIsModerate ? q : larger(q, all_lanes(0x1p-30f));
  const Singles t = from_axis(r, select(is_tiny(q), q, packed_arctangent<kP>(u)));
  const Singles reflected = kSinglePi - t;
  store_elements<kCount>(dst, either(select(left, reflected, t), sign_of(p.y)));
}

#endif
