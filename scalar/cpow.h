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
// small difference or the remainder of large terms, and cpow.cpp takes about 120 bits for each.
#ifndef LUX_SCALAR_CPOW_H
#define LUX_SCALAR_CPOW_H

#include "scalar/internal.h"
#include "scalar/power.h"

// Any power, with every special case.
extern "C" __attribute__((visibility("hidden"))) void _nox_internal_cpow_long(const Lux64fc* z,
                                                                              const Lux64fc* w,
                                                                              Lux64fc* power);

// Whether a part of the result is so near 0 that the error of the angle counts in its last places.
// Not when it is exactly 0, on an axis or a diagonal, nor when the angle is small and its relative
// error with it.
static inline bool uncertain(const Lux64fc& z, long double v, long double a, const Point& point,
                             long double size) {
  const long double cosine = __builtin_fabsl(point.cosine), sine = __builtin_fabsl(point.sine);
  if (__builtin_expect((cosine < sine ? cosine : sine) > size * 0x1p-10f, true)) return false;
  if (v != 0) return true;
  const bool exact = z.re == 0 || z.im == 0 || __builtin_fabs(z.re) == __builtin_fabs(z.im);
  return !(exact || __builtin_fabsl(a) <= 1 / 64.0f);
}

static inline __attribute__((always_inline)) Lux64fc complex_pow(const Lux64fc& z,
                                                                 const Lux64fc& w) {
  const long double x = z.re, y = z.im, u = w.re, v = w.im, norm = x * x + y * y;
  const Reduced reduction = reduced(norm);
  if (__builtin_expect(uint32_t(reduction.exponent + 16382) < 32766, true)) {  // neither 0 nor inf
    const long double log = log2_short(reduction) * 0.5f, angle = angle_short(z);
    const long double size =
        (__builtin_fabsl(u) + __builtin_fabsl(v)) * (__builtin_fabsl(log) + 4.0f);
    if (__builtin_expect(size < 96.0f, true)) {
      long double t = u * log, a = u * angle;
      if (v == 0) {
        if (u == 0) return {1, 0};
      } else {
        t -= v * angle * whole(power_table.right_angle_log2_e);
        a += v * log * whole(power_table.ln2_by_right_angle);
      }
      const uint32_t sign = __builtin_signbit(a) ? Format<float>::kSign : 0;
      const Point point = circle_point(__builtin_fabsl(a));
      if (!uncertain(z, v, a, point, size)) {
        const ScaledPower radius = exp2_parts(t);
        const uint32_t scale = uint32_t(radius.exponent + Format<float>::kBias) << 23;
        float scale_re, scale_im;
        store_bits(&scale_re, scale);
        store_bits(&scale_im, scale | sign);
        return {store_f64(double(radius.value * point.cosine * scale_re)),
                store_f64(double(radius.value * point.sine * scale_im))};
      }
    }
  }
  Lux64fc power;
  _nox_internal_cpow_long(&z, &w, &power);
  return power;
}

#endif
