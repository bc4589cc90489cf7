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

// x in two singles.
struct alignas(16) SinglePairs {
  float high[kPass], low[kPass];

  void put(int32_t k, long double x) {
    ::put_copy(&high[k], x);
    ::put(&low[k], x - high[k]);
  }
};

constexpr float kSign[2] = {1, -1};

// Powers of kPass numbers within the bounds; the bits of the result tell which are not computed.
static inline uint32_t packed_powers(const Complex32* from, const Complex32* exponents,
                                     int32_t stride, Complex32* to) {
  PackedPolar polar;
  double log[kPass], angle[kPass];
  SinglePairs growth, turn;
  for (int32_t k = 0; k < kPass; k += 4) packed_polar(load_four(from + k), k, &polar);
  _mm_empty();
  for (int32_t k = 0; k < kPass; ++k)
    put(&log[k], 0.5f * quick_log(polar.large[k], polar.small[k], polar.norm[k]));
  for (int32_t k = 0; k < kPass; ++k) {
    const bool exchanged = upper_magnitude(&from[k].im) > upper_magnitude(&from[k].re);
    const int octant = exchanged * kExchanged + (upper_word(&from[k].re) >> 31) * kNegative;
    const long double size =
        quick_angle(octant, polar.steps[k], polar.large[k], polar.small[k], polar.tangent[k]);
    put(&angle[k], size * kSign[upper_word(&from[k].im) >> 31]);
  }
  for (int32_t k = 0; k < kPass; ++k) {
    const Complex32& w = exponents[k * stride];
    growth.put(k, w.re * (long double)log[k] - w.im * (long double)angle[k]);
    turn.put(k, w.re * (long double)angle[k] + w.im * (long double)log[k]);
  }
  uint32_t left = 0;
  for (int32_t k = 0; k < kPass; k += 4) {
    const __m128 t = _mm_load_ps(growth.high + k), a = _mm_load_ps(turn.high + k);
    const __m128 inside = _mm_and_ps(_mm_cmplt_ps(magnitude_of(t), all_lanes(40.0f)),
                                     _mm_cmplt_ps(magnitude_of(a), all_lanes(128.0f)));
    left |= (_mm_movemask_ps(inside) ^ 15) << k;
    const __m128 size = packed_exponential(_mm_and_ps(t, inside), 0, _mm_load_ps(growth.low + k));
    const PackedSineCosine y = packed_sine_cosine(_mm_and_ps(a, inside), _mm_load_ps(turn.low + k));
    store_four(to + k, {size * y.cosine, size * y.sine});
  }
  _mm_empty();
  return left;
}

static inline bool has_packed_power(const Complex32& z, const Complex32& w) {
  constexpr uint32_t kExponentBound = bounds(0, 8).bound;
  return (kPackedPart.holds(&z.re) & kPackedPart.holds(&z.im)) &&
         (upper_magnitude(&w.re) < kExponentBound) & (upper_magnitude(&w.im) < kExponentBound) &&
         (upper_magnitude(&w.im) || !(whole_exponent(widened(w)) || upper_magnitude(&w.re) == 0));
}

__attribute__((noinline, cold)) static void accurate_powers(const Complex32* from,
                                                            const Complex32* exponents,
                                                            int32_t stride, Complex32* to,
                                                            uint32_t elements) {
  for (; elements; elements &= elements - 1) {
    const int32_t k = __builtin_ctz(elements);
    to[k] = narrowed(complex_pow(widened(from[k]), widened(exponents[k * stride])));
  }
}

static inline void power_block(const Complex32* from, const Complex32* exponents, int32_t stride,
                               Complex32* to, int32_t count) {
  alignas(16) Complex32 bases[kPass], powers[kPass], result[kPass];
  const uint32_t all = (2u << (count - 1)) - 1;
  uint32_t accurate = 0;
  for (int32_t k = 0; k < count; ++k)
    accurate |= uint32_t(!has_packed_power(from[k], exponents[k * stride])) << k;
  if (__builtin_expect(accurate == 0 && count == kPass, true)) {
    accurate = packed_powers(from, exponents, stride, result);
  } else if (accurate != all) {
    for (int32_t k = 0; k < kPass; ++k) {
      const bool packed = k < count && !(accurate >> k & 1);
      bases[k] = packed ? from[k] : Complex32{1, 1};
      powers[k] = packed ? exponents[k * stride] : Complex32{1, 1};
    }
    accurate |= packed_powers(bases, powers, 1, result) & all;
  }
  if (__builtin_expect(accurate, 0)) accurate_powers(from, exponents, stride, result, accurate);
  store_block(to, result, count);
}

// The exponents stand beside each other, or there is one.
static inline Status run_packed_powers(const Lux32fc* src, const Lux32fc* exponents, int32_t stride,
                                       Lux32fc* dst, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !exponents || !dst) return LUX_NULL_POINTER;
  const BothNearest<X87_EXTENDED> control;
  for (int32_t i = 0, count; i < len; i += count) {
    count = len - i < kPass ? len - i : kPass;
    power_block(&in_memory(src + i), &in_memory(exponents + i * stride), stride,
                &in_memory(dst + i), count);
  }
  control.leave();
  return LUX_OK;
}

#endif
