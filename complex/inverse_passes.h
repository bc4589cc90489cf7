// SPDX-License-Identifier: MIT
//
// Inverse tangents, sines and cosines of complex arrays in passes. Every element gives the bits of its
// routine.
#ifndef LUX_COMPLEX_INVERSE_PASSES_H
#define LUX_COMPLEX_INVERSE_PASSES_H

#include "complex/functions.h"
#include "complex/passes.h"

// 0, or of 2^-300 to 2^kLimit: quotients, roots and squares of such parts can be split.
template <int kLimit>
static inline bool may_split(const DoubleInMemory& x) {
  constexpr uint32_t kLow = uint32_t(1023 - 300) << 20, kHigh = uint32_t(1023 + kLimit) << 20;
  const Words w = load_words(&x);
  const uint32_t upper = w.upper & ~kSignUpper;
  return (upper - kLow < kHigh - kLow) | ((upper | w.lower) == 0);
}

// log(1 + x), with 1 + x of 2^-120 to 2^120.
struct LogArguments {
  SplitNumber x[kPass];
  float sum[kPass];

  void put(int32_t k, long double value) {
    x[k].put(value);
    ::put(&sum[k], 1.0f + value);
  }
  long double log1p(int32_t k) const { return log1p_near(x[k].sum(), log_place(sum[k])); }
};

// The angles of points above the axis. Which part is smaller is an index: every other element would
// mispredict the branch.
struct Points {
  SplitNumber parts[kPass][2];
  int32_t octant[kPass], steps[kPass];

  void put(int32_t k, long double y, long double x, bool negative) {
    octant[k] = (y > x) * kExchanged + negative * kNegative;
    parts[k][0].put(y);
    parts[k][1].put(x);
  }
  long double smaller(int32_t k) const { return parts[k][octant[k] & kExchanged].sum(); }
  long double larger(int32_t k) const { return parts[k][~octant[k] & kExchanged].sum(); }
  void find_steps(int32_t count) {
    for (int32_t k = 0; k < count; ++k) ::put(&steps[k], angle_step(smaller(k), larger(k)));
  }
  long double angle(int32_t k) const {
    return angle_near(octant[k], steps[k], smaller(k), larger(k));
  }
};

// atan takes the parts exchanged and gives them so: each sign that the turn changes is changed back.
template <bool kTurned, Complex64 (*kElement)(const Complex64&)>
struct InverseTangentSteps {
  static constexpr int32_t kFew = 3;

  // Also away from the pole, where 4x over the norm becomes large.
  static bool is_ordinary(const Complex64& z) {
    const uint32_t x = upper_magnitude(kTurned ? &z.im : &z.re);
    const uint32_t y = upper_magnitude(kTurned ? &z.re : &z.im);
    return may_split<300>(z.re) & may_split<300>(z.im) & ((x != 0x3FF00000) | (y >= 0x3C600000));
  }
  static Complex64 element(const Complex64& z) { return kElement(z); }

  static void passes(const Complex64* from, Complex64* to, int32_t count) {
    const DoubleInMemory* const re = kTurned ? &from->im : &from->re;
    const DoubleInMemory* const im = kTurned ? &from->re : &from->im;
    DoubleInMemory *const to_re = kTurned ? &to->im : &to->re, *const to_im =
                                                                   kTurned ? &to->re : &to->im;
    LogArguments arguments;
    Points points;
    double size[kPass];
    for (int32_t k = 0; k < count; ++k) {
      const long double x = __builtin_fabsl(load_extended(re + 2 * k));
      const long double y = load_extended(im + 2 * k), left = 1.0f - x;
      arguments.put(k, 4.0f * x / (left * left + y * y));
    }
    for (int32_t k = 0; k < count; ++k)
      put(&size[k], arguments.log1p(k) * (0.25f * sign_of(re[2 * k])));
    for (int32_t k = 0; k < count; ++k) {
      const long double x = __builtin_fabsl(load_extended(re + 2 * k));
      const long double y = __builtin_fabsl(load_extended(im + 2 * k));
      const long double abscissa = (1.0f - x) * (1.0f + x) - y * y;
      points.put(k, 2.0f * y, __builtin_fabsl(abscissa), abscissa < 0);
    }
    points.find_steps(count);
    for (int32_t k = 0; k < count; ++k) {
      put(to_im + 2 * k, points.angle(k) * (0.5f * sign_of(im[2 * k])));
      copy_bits(to_re + 2 * k, size[k]);
    }
  }
};

enum class Arcs { kSine, kCosine, kHyperbolicCosine };

// kTurned: asinh, which takes the parts exchanged and gives them so.
template <Arcs kArc, bool kTurned, Complex64 (*kElement)(const Complex64&)>
struct ArcSteps {
  static constexpr int32_t kFew = 1;

  // Up to 2^55 the growth has a logarithm in the moderate range. 1 has no angle.
  static bool is_ordinary(const Complex64& z) {
    const DoubleInMemory &x = kTurned ? z.im : z.re, &y = kTurned ? z.re : z.im;
    return may_split<55>(x) & may_split<55>(y) &
           ((upper_magnitude(&x) != 0x3FF00000) | (upper_magnitude(&y) != 0));
  }
  static Complex64 element(const Complex64& z) { return kElement(z); }

  static void passes(const Complex64* from, Complex64* to, int32_t count) {
    constexpr bool kUpper = kArc != Arcs::kSine, kCrossed = kArc == Arcs::kHyperbolicCosine;
    const DoubleInMemory* const re = kTurned ? &from->im : &from->re;
    const DoubleInMemory* const im = kTurned ? &from->re : &from->im;
    DoubleInMemory* const to_u = kTurned != kCrossed ? &to->im : &to->re;
    DoubleInMemory* const to_v = kTurned != kCrossed ? &to->re : &to->im;
    LogArguments arguments;
    Points points;
    double v[kPass];
    SplitNumber a[kPass], m[kPass];
    const auto x = [=](int32_t k) { return __builtin_fabsl(load_extended(re + 2 * k)); };
    const auto y = [=](int32_t k) { return __builtin_fabsl(load_extended(im + 2 * k)); };
    for (int32_t k = 0; k < count; ++k) {
      const ArcNorms norms = arc_norms(x(k), y(k));
      a[k].put(norms.a);
      m[k].put(norms.m);
    }
    for (int32_t k = 0; k < count; ++k) {
      const ArcRoots roots = arc_roots(x(k), y(k), {a[k].sum(), m[k].sum()});
      arguments.put(k, roots.growth);
      if (kUpper)
        points.put(k, roots.cosine, roots.sine, re[2 * k] < 0);
      else
        points.put(k, roots.sine, roots.cosine, false);
    }
    for (int32_t k = 0; k < count; ++k) {
      const float sign = kCrossed ? 1 : kUpper ? -sign_of(im[2 * k]) : sign_of(im[2 * k]);
      put(&v[k], arguments.log1p(k) * (0.5f * sign));
    }
    points.find_steps(count);
    for (int32_t k = 0; k < count; ++k) {
      const float sign = kCrossed ? sign_of(im[2 * k]) : kUpper ? 1 : sign_of(re[2 * k]);
      put(to_u + 2 * k, points.angle(k) * sign);
      copy_bits(to_v + 2 * k, v[k]);
    }
  }
};

using AtanSteps = InverseTangentSteps<true, complex_atan>;
using AtanhSteps = InverseTangentSteps<false, complex_atanh>;
using AsinSteps = ArcSteps<Arcs::kSine, false, complex_asin>;
using AsinhSteps = ArcSteps<Arcs::kSine, true, complex_asinh>;
using AcosSteps = ArcSteps<Arcs::kCosine, false, complex_acos>;
using AcoshSteps = ArcSteps<Arcs::kHyperbolicCosine, false, complex_acosh>;

#endif
