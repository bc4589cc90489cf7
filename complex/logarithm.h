// SPDX-License-Identifier: MIT
//
// Complex logarithm to any base b.
//
//   log_b z = log_b(e) (log(re^2 + im^2) / 2 + i angle)
//
// in extended precision, where squares of doubles stay inside the format. Where re^2 + im^2 is
// within 1/4 of 1, the logarithm comes from re^2 + im^2 - 1, which is summed from exact products.
#ifndef LUX_COMPLEX_LOGARITHM_H
#define LUX_COMPLEX_LOGARITHM_H

#include "complex/number.h"
#include "extended/angle.h"
#include "extended/logarithm.h"

// The 32 leading bits of a double, and the other 21.
struct Halves {
  long double head, tail;
};

static inline Halves halved(long double x) {
  const long double product = 4294967297.0 * x, head = product - (product - x);
  return {head, x - head};
}

// a^2 + b^2 - 1 of two doubles, a >= b >= 0, when it is at most 1/4 in magnitude: relative error
// below 2^-62.
//
// The six products are exact, and so is head^2 - 1, since a > 0.6. With them added largest first, a
// sum that is not exact has at least 64 bits above the last places of its terms, which puts it far
// above the terms to come, so that they cannot cancel it. The first sum alone may be as small as
// the second product (at a = 1 - 2^-33); what it loses is put back.
__attribute__((noinline)) static long double norm_less_one(long double a, long double b) {
  const Halves x = halved(a), y = halved(b);
  const long double first = x.head * x.head - 1.0f, second = y.head * y.head;
  const long double heads = first + second, lost = second - (heads - first);
  const long double mixed = ((heads + 2.0f * x.head * x.tail) + lost) + 2.0f * y.head * y.tail;
  return (mixed + x.tail * x.tail) + y.tail * y.tail;
}

// The parts of a finite number other than 0 by size, and the octant that this makes of it.
struct BySize {
  long double large, small;
  int octant;
};

__attribute__((always_inline)) static inline BySize by_size(const Complex64& z, bool exchanged) {
  const double* const parts = &z.re;
  return {__builtin_fabsl(load_extended(parts + exchanged)),
          __builtin_fabsl(load_extended(parts + !exchanged)),
          int(exchanged * kExchanged + (upper_word(&z.re) >> 31) * kNegative)};
}

__attribute__((always_inline)) static inline long double signed_angle(const BySize& p,
                                                                      const double* im) {
  return angle(p.octant, p.small, p.large) * sign_of(*im);
}

// The angle of any finite number other than 0.
static long double full_angle(const Complex64& z) {
  return signed_angle(by_size(z, __builtin_fabs(z.im) > __builtin_fabs(z.re)), &z.im);
}

// Zeros, infinities, NaNs, and numbers that are far from 1.
__attribute__((noinline, cold)) static Complex64 complex_log_far(const Complex64& z,
                                                                 long double half) {
  const bool infinite_re = _nox_internal_isinf(z.re), infinite_im = _nox_internal_isinf(z.im);
  const bool unknown = _nox_internal_isnan(z.re) || _nox_internal_isnan(z.im);
  if (infinite_re || infinite_im) {
    if (unknown) return {__builtin_inf(), z.re + z.im};
    const Complex64 corner = {__builtin_copysign(infinite_re, z.re),
                              __builtin_copysign(infinite_im, z.im)};
    return rounded(__builtin_infl(), full_angle(corner) * (2 * half));
  }
  if (unknown) return {z.re + z.im, z.re + z.im};
  if (_nox_internal_iszero(z.re) && _nox_internal_iszero(z.im)) {
    const Complex64 axis = {__builtin_copysign(1.0, z.re), z.im};
    return rounded(-1 / __builtin_fabsl(z.re), full_angle(axis) * (2 * half));
  }
  const long double re = load_extended(&z.re), im = load_extended(&z.im), norm = re * re + im * im;
  return rounded(log_far(norm) * half, full_angle(z) * (2 * half));
}

__attribute__((noinline, cold)) static long double log_near_one(long double large,
                                                                long double small) {
  return log1p_core(norm_less_one(large, small));
}

// Whether z is finite, not 0, and far from over- and underflow of re^2 + im^2 as a single.
static inline bool has_short_log(const Complex64& z) {
  constexpr uint32_t kLow = 0x3C300000, kHigh = 0x43B00000;  // upper words of 2^-60 and 2^60
  const uint32_t re = upper_magnitude(&z.re), im = upper_magnitude(&z.im);
  return (re < kHigh) & (im < kHigh) & ((re >= kLow) | (im >= kLow));
}

// By its pattern, which the passes have at hand.
static inline bool is_near_one(float norm) {
  return magnitude<float>(load_bits(&norm)) - 0x3F400001 < 0x3FA00000 - 0x3F400001;  // 0.75, 1.25
}

// `half` is half the logarithm of e to the base.
__attribute__((always_inline)) static inline Complex64 complex_log_to_base(const Complex64& z,
                                                                           long double half) {
  if (__builtin_expect(!has_short_log(z), false)) return complex_log_far(z, half);
  const BySize p = by_size(z, upper_magnitude(&z.im) > upper_magnitude(&z.re));
  const long double norm = p.large * p.large + p.small * p.small;
  const float single = store_f32(float(norm));
  long double logarithm;
  if (__builtin_expect(is_near_one(single), false)) {
    logarithm = log_near_one(p.large, p.small);
  } else {
    const LogPlace place = log_place(single);
    logarithm = log_sum(norm * place.scale - 1.0f, *place.cell, place.exponent);
  }
  return rounded(logarithm * half, signed_angle(p, &z.im) * (2 * half));
}

#endif
