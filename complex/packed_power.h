// SPDX-License-Identifier: MIT
//
// The lower grades of the complex power of singles, z^w = e^(w log z), within 2^-21 in the plane.
//
// |w log z| magnifies the errors of the logarithm, which therefore is computed in extended precision,
// one element after the other, but with short polynomials:
//
//   log |z|   the table's cells, r - r^2/2 + r^3/3, |r| <= 0.0024: off by less than 2^-35 with its
//             half taken
//   angle     the table's steps, s - s^3/3, |s| <= 0.0079: off by less than 2^-37
//
// With parts of w below 8, w log z is off by less than 2^-31. Its parts become two singles each, of
// which four elements packed take exponential, sine and cosine. Whole exponents that have products of
// their own, parts of z that are 0 or out of bounds, and large w log z go the way of A24.
#ifndef LUX_COMPLEX_PACKED_POWER_H
#define LUX_COMPLEX_PACKED_POWER_H

#include "complex/packed.h"
#include "complex/power_passes.h"

// z by size, its angle counted from that of the nearest step.
struct alignas(16) PackedPolar {
  float large[kPass], small[kPass], tangent[kPass], norm[kPass];
  int32_t steps[kPass];
};

static inline void packed_polar(const PackedComplex& z, int32_t k, PackedPolar* to) {
  const __m128 a = magnitude_of(z.re), b = magnitude_of(z.im);
  const __m128 large = _mm_max_ps(a, b), small = _mm_min_ps(a, b);
  const __m128 steps = small / large * 64.0f;
  __m64* const pairs = reinterpret_cast<__m64*>(to->steps + k);
  pairs[0] = _mm_cvtps_pi32(steps);
  pairs[1] = _mm_cvtps_pi32(_mm_movehl_ps(steps, steps));
  _mm_store_ps(to->large + k, large);
  _mm_store_ps(to->small + k, small);
  _mm_store_ps(to->tangent + k, nearest_whole(steps) * (1 / 64.0f));
  _mm_store_ps(to->norm + k, large * large + small * small);
}

static inline long double quick_log(long double large, long double small, float norm) {
  const ExtendedLog& table = anew(kLog);
  const LogPlace place = log_place(norm);
  const LogCell& cell = *place.cell;
  const long double f = (large * large + small * small) * place.scale - 1.0f;
  const long double r = f * cell.c + cell.c1, series = 0.5f - r * (1 / 3.0);
  return place.exponent * (long double)table.two_high + cell.high + (r - r * r * series);
}

static inline long double quick_angle(int octant, int32_t j, long double large, long double small,
                                      float tangent) {
  const ExtendedAngles& table = anew(kAtan);
  const long double s = (small - large * tangent) / (large + small * tangent) * kTurn[octant];
  return table.angle[octant][j].high + (s + s * s * s * table.quick[0]);
}

// x in two singles, as a multiple of 2^-51, |x| < 2048: neither is a subnormal number.
struct alignas(16) SinglePairs {
  float high[kPass], low[kPass];

  void put(int32_t k, long double x) {
    constexpr float kShifter = 0x1.8p12f;
    x = (x + kShifter) - kShifter;
    ::put_copy(&high[k], x);
    ::put(&low[k], x - high[k]);
  }
};

struct PackedPowerSteps {
  static constexpr int32_t kGroup = 4, kFew = 0;

  static bool is_ordinary(const Complex32& z, const Complex32& w) {
    constexpr uint32_t kExponentBound = bounds(0, 8).bound;
    return (kPackedPart.holds(&z.re) & kPackedPart.holds(&z.im)) &&
           (upper_magnitude(&w.re) < kExponentBound) & (upper_magnitude(&w.im) < kExponentBound) &&
           (upper_magnitude(&w.im) || !(whole_exponent(widened(w)) || upper_magnitude(&w.re) == 0));
  }
  static Complex32 element(const Complex32& z, const Complex32& w) {
    return narrowed(complex_pow(widened(z), widened(w)));
  }

  static uint32_t passes(const PowerBlock<Complex32>& block, Complex32* to) {
    static const float signs[2] = {1, -1};
    const Complex32* const from = block.base;
    PackedPolar polar;
    double log[kPass], angle[kPass];
    SinglePairs growth, turn;
    for (int32_t k = 0; k < block.count; k += 4) packed_polar(load_four(from + k), k, &polar);
    _mm_empty();
    for (int32_t k = 0; k < block.count; ++k)
      put(&log[k], 0.5f * quick_log(polar.large[k], polar.small[k], polar.norm[k]));
    for (int32_t k = 0; k < block.count; ++k) {
      const bool exchanged = upper_magnitude(&from[k].im) > upper_magnitude(&from[k].re);
      const int octant = exchanged * kExchanged + (upper_word(&from[k].re) >> 31) * kNegative;
      const long double size =
          quick_angle(octant, polar.steps[k], polar.large[k], polar.small[k], polar.tangent[k]);
      put(&angle[k], size * signs[upper_word(&from[k].im) >> 31]);
    }
    for (int32_t k = 0; k < block.count; ++k) {
      const Complex32& w = block.w(k);
      growth.put(k, w.re * (long double)log[k] - w.im * (long double)angle[k]);
      turn.put(k, w.re * (long double)angle[k] + w.im * (long double)log[k]);
    }
    uint32_t left = 0;
    for (int32_t k = 0; k < block.count; k += 4) {
      const __m128 t = _mm_load_ps(growth.high + k), a = _mm_load_ps(turn.high + k);
      const __m128 inside = _mm_and_ps(_mm_cmplt_ps(magnitude_of(t), all_lanes(40.0f)),
                                       _mm_cmplt_ps(magnitude_of(a), all_lanes(128.0f)));
      left |= (_mm_movemask_ps(inside) ^ 15) << k;
      const __m128 size = packed_exponential(_mm_and_ps(t, inside), 0, _mm_load_ps(growth.low + k));
      const PackedSineCosine y =
          packed_sine_cosine(_mm_and_ps(a, inside), _mm_load_ps(turn.low + k));
      store_four(to + k, {size * y.cosine, size * y.sine});
    }
    _mm_empty();
    return left;
  }
};

// The exponents stand beside each other, or there is one.
static inline Status run_packed_powers(const Lux32fc* src, const Lux32fc* exponents, int32_t stride,
                                       Lux32fc* dst, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !exponents || !dst) return LUX_NULL_POINTER;
  const BothNearest<X87_EXTENDED> control;
  for (int32_t i = 0; i < len; i += kPass) {
    const int32_t count = len - i < kPass ? len - i : kPass;
    power_block<PackedPowerSteps, Complex32>(
        {&in_memory(src + i), &in_memory(exponents + i * stride), stride, count},
        &in_memory(dst + i));
  }
  control.leave();
  return LUX_OK;
}

#define LUX_COMPLEX_POWERS(family, shape, bases, exponents, stride)                               \
  LUX_KERNEL(family, 64fc, A53, shape) { return run_powers(bases, exponents, stride, dst, len); } \
  LUX_KERNEL_ALIAS(family, 64fc, A50, shape, A53)                                                 \
  LUX_KERNEL(family, 32fc, A24, shape) { return run_powers(bases, exponents, stride, dst, len); } \
  LUX_KERNEL(family, 32fc, A21, shape) {                                                          \
    return run_packed_powers(bases, exponents, stride, dst, len);                                 \
  }                                                                                               \
  LUX_KERNEL_ALIAS(family, 32fc, A11, shape, A21)

#endif
