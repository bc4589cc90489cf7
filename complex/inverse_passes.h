// SPDX-License-Identifier: MIT
//
// Inverse tangents, sines and cosines of complex arrays in passes. Every element gives the bits of its
// routine.
#ifndef LUX_COMPLEX_INVERSE_PASSES_H
#define LUX_COMPLEX_INVERSE_PASSES_H

#include "complex/functions.h"
#include "complex/passes.h"

// 0, or so far from the ends of the range that quotients, roots and squares of two parts can be split.
static inline bool may_split(const DoubleInMemory& x) {
  constexpr uint32_t kLow = 0x2D300000, kHigh = 0x52B00000;  // upper words of 2^-300 and 2^300
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
  // Also away from the pole, where 4x over the norm becomes large.
  static bool is_ordinary(const Complex64& z) {
    const uint32_t x = upper_magnitude(kTurned ? &z.im : &z.re);
    const uint32_t y = upper_magnitude(kTurned ? &z.re : &z.im);
    return may_split(z.re) & may_split(z.im) & ((x != 0x3FF00000) | (y >= 0x3C600000));
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

using AtanSteps = InverseTangentSteps<true, complex_atan>;
using AtanhSteps = InverseTangentSteps<false, complex_atanh>;

#endif
