// SPDX-License-Identifier: MIT
//
// Logarithms of complex arrays in passes: places of |z|^2 in the table, its logarithms, places of the
// angles, angles. Every element gives the bits of its routine.
#ifndef LUX_COMPLEX_LOGARITHM_PASSES_H
#define LUX_COMPLEX_LOGARITHM_PASSES_H

#include "complex/functions.h"
#include "complex/passes.h"

// The parts of the numbers by size.
struct BySizes {
  const DoubleInMemory *large[kPass], *small[kPass];
  int32_t octant[kPass];

  void put(int32_t k, const Complex64& z) {
    const bool exchanged = upper_magnitude(&z.im) > upper_magnitude(&z.re);
    large[k] = &z.re + exchanged;
    small[k] = &z.re + !exchanged;
    octant[k] = exchanged * kExchanged + (upper_word(&z.re) >> 31) * kNegative;
  }
  long double larger(int32_t k) const { return __builtin_fabsl(load_extended(large[k])); }
  long double smaller(int32_t k) const { return __builtin_fabsl(load_extended(small[k])); }
};

static inline long double norm_of(const Complex64& z) {
  const long double re = load_extended(&z.re), im = load_extended(&z.im);
  return re * re + im * im;
}

template <Complex64 (*kElement)(const Complex64&), const long double& kHalf>
struct LogSteps {
  static constexpr int32_t kFew = 1;

  static bool is_ordinary(const Complex64& z) { return has_short_log(z); }
  static Complex64 element(const Complex64& z) { return kElement(z); }

  static void passes(const Complex64* from, Complex64* to, int32_t count) {
    BySizes parts;
    float single[kPass];
    double log[kPass];
    int32_t steps[kPass];
    uint32_t near = 0;
    for (int32_t k = 0; k < count; ++k) {
      put(&single[k], norm_of(from[k]));
      parts.put(k, from[k]);
    }
    for (int32_t k = 0; k < count; ++k) {
      const LogPlace place = log_place(single[k]);
      const long double f = norm_of(from[k]) * place.scale - 1.0f;
      put(&log[k], log_sum(f, *place.cell, place.exponent) * kHalf);
      near |= uint32_t(is_near_one(single[k])) << k;
    }
    for (int32_t k = 0; k < count; ++k)
      put(&steps[k], angle_step(parts.smaller(k), parts.larger(k)));
    for (; __builtin_expect(near, 0); near &= near - 1) {
      const int32_t k = __builtin_ctz(near);
      put(&log[k], log_near_one(parts.larger(k), parts.smaller(k)) * kHalf);
    }
    for (int32_t k = 0; k < count; ++k) {
      const long double size =
          angle_near(parts.octant[k], steps[k], parts.smaller(k), parts.larger(k));
      put(&to[k].im, size * sign_of(from[k].im) * (2 * kHalf));
      copy_bits(&to[k].re, log[k]);
    }
  }
};

using LnSteps = LogSteps<complex_log, kHalfNatural>;
using Log10Steps = LogSteps<complex_log10, kHalfDecimal>;

#endif
