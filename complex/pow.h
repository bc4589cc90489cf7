// SPDX-License-Identifier: MIT
//
// Complex power z^w, w = u + i v, in polar form, with log2 |z| = L and the angle of z = A right
// angles:
//
//   t = u L - v A (pi/2) / ln 2,  a = u A + v L ln 2 / (pi/2),  z^w = 2^t (cos a + i sin a)
//
// Right angles keep the axes and the diagonals exact, so i^2 is -1 + 0i. L, A, t and a are extended
// numbers of 64 bits while (|u| + |v|) (|L| + 4) < 96: their errors are below 2^-55 then, and the
// result's distance from the power is that and two roundings to double. Beyond, t and a are the
// small difference or the remainder of large terms, and pow.cpp takes about 120 bits for each; so
// it does where a part is so near 0 that the error of a counts in its last places. Whole exponents
// to 4 in magnitude are products, see whole_power.h.
//
// Worst found, sampled: 2^-52.99 of the magnitude; 0.97 ulp of a part above 2^-60 |w log z| of it.
#ifndef LUX_COMPLEX_POW_H
#define LUX_COMPLEX_POW_H

#include "complex/number.h"
#include "complex/polar.h"
#include "complex/whole_power.h"

// Any power, with every special case.
extern "C" __attribute__((visibility("hidden"))) void _nox_internal_cpow_long(const Complex64* z,
                                                                              const Complex64* w,
                                                                              Complex64* power);

// Whether an angle next to an axis is known well enough all the same: exactly, because base and
// exponent are such, or because it is small and its error with it.
static inline bool is_certain(const Complex64& z, const Complex64& w, long double a) {
  if (!_nox_internal_iszero(w.im)) return false;
  return z.re == 0 || z.im == 0 || __builtin_fabs(z.re) == __builtin_fabs(z.im) ||
         __builtin_fabsl(a) <= 1 / 64.0f;
}

static inline __attribute__((always_inline)) Complex64 complex_pow(const Complex64& z,
                                                                   const Complex64& w) {
  if (is_finite_number(z)) {
    const int32_t n = whole_exponent(w);
    if (n) return whole_power(z, n, upper_word(&w.re) >> 31);
    if (_nox_internal_iszero(w.re) && _nox_internal_iszero(w.im)) return {1, 0};
  }
  const long double x = z.re, y = z.im;
  Cell cell;
  const long double m = reduced(x * x + y * y, &cell);
  if (__builtin_expect(uint32_t(cell.exponent + 16382) < 32766, true)) {  // neither 0 nor inf
    const long double log = log2_short(m, cell) * 0.5f, angle = angle_short(z);
    const long double size =
        (__builtin_fabsl(w.re) + __builtin_fabsl(w.im)) * (__builtin_fabsl(log) + 4.0f);
    if (__builtin_expect(__builtin_isless(size, 96.0f), true)) {  // not so a NaN, silently
      long double t = log * w.re, a = angle * w.re;
      if (!_nox_internal_iszero(w.im)) {
        const PowerTable& table = anew(power_table);
        t -= angle * w.im * whole(table.right_angle_log2_e);
        a += log * w.im * whole(table.ln2_by_right_angle);
      }
      const uint32_t sign = __builtin_signbit(a) ? Format<float>::kSign : 0;
      const auto [cosine, sine] = circle_point(__builtin_fabsl(a));
      const long double c = __builtin_fabsl(cosine), s = __builtin_fabsl(sine);
      if (__builtin_expect((c < s ? c : s) > size * 0x1p-11f, true) || is_certain(z, w, a)) {
        const ScaledPower radius = exp2_parts(t);
        const uint32_t scale = uint32_t(radius.exponent + Format<float>::kBias) << 23;
        float scale_re, scale_im;
        store_bits(&scale_re, scale);
        store_bits(&scale_im, scale | sign);
        return {store_f64(double(radius.value * cosine * scale_re)),
                store_f64(double(radius.value * sine * scale_im))};
      }
    }
  }
  Complex64 power;
  _nox_internal_cpow_long(&z, &w, &power);
  return power;
}

#endif
