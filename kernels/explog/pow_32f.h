// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays: what Pow and Powx share; they differ in where the exponent
// stands.
//
// A24, on the x87 unit at 53-bit precision:
//
//   x = 2^e m, 1 <= m < 2, i = round(256 (m - 1)), z = m R[i] - 1 exactly, |z| <= 2^-9,
//   log2 x = z Q(z) + log2(1/R[i]) + e,  t = y log2 x,
//   k = round(256 t), r = t - k/256, 2^t = 2^floor(k/256) T[k mod 256] ((r + D1) r + D0).
//
//   R[0] = 1 and R[256] = 1/2, so that nothing cancels next to 1 and the logarithm keeps its
//   relative error, 3.7e-13 by Q. At |t| <= 150 that is 4e-11 of the power; the quadratic adds
//   1.1e-10, and 2^-33 is 0.002 ulp. Powers of two come out exact.
//
// A21, packed single precision:
//
//   x = 2^e m, sqrt(1/2) <= m < sqrt(2), s = (m - 1)/(m + 1) = sh + sl, sh of 12 bits,
//   log2 x = (e + Ch sh) + (Ch sl + s (Cl + s^2 L(s^2))), the first sum exact in two singles;
//   its leading 12 bits times the exponent's leading 12 bits are exact, the other parts small.
//   2^t by a polynomial of degree six, |r| <= 0.501.
//
//   The logarithm's relative error is below 2^-29, t's below 2^-22 at |t| < 125, and the
//   polynomial's roundings are about 2^-23: below 2^-21 together.
//
// A11, packed: the same in plain single precision with shorter polynomials; the logarithm's
// relative error of 2^-21 becomes 2^-14.5 in t, the polynomial adds 2^-17.
//
//   ordinary elements   blocks of eight: x a positive normal number, |y| < 2^31, |t| < 126; packed
//                       |t| < 125, since an error of t must not lift a subnormal result. A larger y
//                       only lets x = 1 through, and its products overflow.
//   others              one by one in every grade by pow_extended.h, rounded once
//
// Worst errors found: A24 0.5017 ulp at (0x3E6D0512, 0x41270251); relative A21 2^-22.0, A11 2^-15.0
// (sampled).
#ifndef LUX_KERNELS_EXPLOG_POW_32F_H
#define LUX_KERNELS_EXPLOG_POW_32F_H

#include "kernels/grid.h"
#include "kernels/lanes.h"
#include "kernels/explog/generated/pow_32f_table.h"  // static_const_table
#include "kernels/explog/pow_extended.h"
#include "kernels/explog/pow_special.h"

constexpr int32_t kBlock = 8;
constexpr uint32_t kLargeExponent = 0x4F000000;  // 2^31

// Of an exponent, in the sign bit: too large, or a NaN.
static inline uint32_t too_large(const float* y) { return kLargeExponent - 1 - upper_magnitude(y); }

// ---- x87

// Of m times 2^(exponent field of `bits` - 127); m and `bits` have one fraction.
static inline double log2_of(float m, uint32_t bits) {
  const auto& table = static_const_table;
  const auto& cell = table.cell[((bits & Format<float>::kFraction) + 0x4000) >> 15];
  const double z = m * cell.reciprocal - 1.0f;
  return (((table.q[3] * z + table.q[2]) * z + table.q[1]) * z + table.q[0]) * z +
         (cell.log2 + table.exponent[bits >> 23]);
}

struct Power {
  double value;  // to be multiplied by 2^floor(k/256)
  int32_t k;
};

static inline Power exp2_of(double t) {
  const auto& table = static_const_table;
  double grid;
  const double u = t + table.shifter;
  put_copy(&grid, u);
  const int32_t k = int32_t(load_words(&grid).lower);
  const double r = t - (u - table.shifter);
  return {((r + table.d1) * r + table.d0) * table.power[k & 255], k};
}

// The power of a finite positive base, and a finite exponent, so precise before its only rounding
// that infinity and zero begin where they should.
static uint32_t finite_pow(uint32_t pattern, const float* y) {
  float x;
  store_bits(&x, pattern);
  const double base = store_f64(x), exponent = store_f64(in_memory(y));
  const X87Nearest<X87_EXTENDED> control;
  x = store_f32(float(extended_pow(&base, &exponent)));
  control.leave();
  return load_bits(&x);
}

// Eight or one whose results are normal numbers. Stores nothing otherwise.
template <int kCount, class Exponent>
static inline bool x87_ordinary(const float* x, Exponent y, float* dst, int32_t i) {
  constexpr uint32_t kBound = 0x405F8000;  // upper word of 126.0
  alignas(16) float m[kBlock];
  double t[kCount];
  for (int lane = 0; lane < kCount; lane += 4)
    _mm_store_ps(m + lane,
                 significand_of(kCount == 1 ? load_lane(x + i) : load_lanes(x + i + lane)));
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane)
    t[lane] = log2_of(m[lane], load_bits(x + i + lane)) * in_memory(y.at(i + lane));
  if (!all_below<kCount>(t, kBound)) return false;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) {
    const Power power = exp2_of(t[lane]);
    const float value = store_f32(float(power.value));
    store_bits(dst + i + lane, load_bits(&value) + (uint32_t(power.k >> 8) << 23));
  }
  return true;
}

template <class Exponent>
static Status pow_x87(const Arrays<float>& arrays, Exponent y, int32_t len) {
  const float* const x = arrays.src1;
  float* const dst = arrays.dst1;
  return run_kernel<X87Nearest<X87_DOUBLE>, kBlock>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        while (i < last && in_domain<kBlock, too_large>(x, y, i) &&
               x87_ordinary<kBlock>(x, y, dst, i))
          i += kBlock;
        return i;
      },
      [&](int32_t i, Status* status) {
        if (!in_domain<1, too_large>(x, y, i) || !x87_ordinary<1>(x, y, dst, i))
          pow_special(arrays, y.at(i), i, status, finite_pow);
      });
}

// ---- Packed

// The lowest power first.
template <int kTerms>
static inline __m128 rising_polynomial(const float (&c)[kTerms], __m128 x) {
  __m128 sum = all_lanes(c[kTerms - 1]);
#pragma GCC unroll 8
  for (int i = kTerms - 2; i >= 0; --i) sum = sum * x + c[i];
  return sum;
}

// 2^k of integers from -126 to 127: k is put into the exponent field as an integer.
static inline __m128 powers_of_two(__m128 k) {
  const __m128 field = k * 0x1p23f + 0x1.fcp29f;  // 127 2^23
  __m64 pairs[2] = {_mm_cvtps_pi32(field), _mm_cvtps_pi32(_mm_movehl_ps(field, field))};
  asm("" : "+m"(pairs));
  return load_halves(pairs, pairs + 1);
}

// x = 2^e (z + 1), sqrt(1/2) <= z + 1 < sqrt(2)
struct Base {
  __m128 e, z;
};

static inline Base reduce(__m128 x) {
  alignas(16) int32_t fields[4];
  _mm_store_ps(reinterpret_cast<float*>(fields), _mm_and_ps(x, all_lanes(Format<float>::kInf)));
  const __m128 m = significand_of(x), above = _mm_cmplt_ps(all_lanes(0x1.6a09e6p+0f), m);
  const __m128 bias = 127.0f - _mm_and_ps(above, all_lanes(1.0f));
  return {from_integers(fields) * 0x1p-23f - bias, m - _mm_and_ps(above, m * 0.5f) - 1.0f};
}

// 2^(k + r)
struct Split {
  __m128 k, r, whole;  // `whole` to be tested against the range
};

struct A21 {
  static __m128 fraction_power(__m128 r) { return rising_polynomial(kLongExp, r); }

  static Split product(__m128 x, __m128 y) {
    const auto [e, z] = reduce(x);
    const __m128 inverse = 1.0f / (z + 2.0f);
    const __m128 s_high = leading_half(z * inverse), z_high = leading_half(z);
    const __m128 remainder = ((z - (s_high + s_high)) - s_high * z_high) - s_high * (z - z_high);
    const __m128 s_low = remainder * inverse, s = s_high + s_low, s2 = s * s;
    const __m128 tail = s_low * kLogHigh + s * (s2 * rising_polynomial(kLogTail, s2) + kLogLow);
    const __m128 head = s_high * kLogHigh, sum = e + head;
    const __m128 lost = head - (sum - e);
    const __m128 l_high = leading_half(sum), l_low = (sum - l_high) + (lost + tail);
    const __m128 y_high = leading_half(y);
    const __m128 t_high = y_high * l_high;
    const __m128 t_low = (y - y_high) * l_high + y * l_low;
    const __m128 t = t_high + t_low, k = to_grid<1>(t).multiple;
    return {k, (t_high - k) + t_low, t};
  }
};

struct A11 {
  static __m128 fraction_power(__m128 r) { return rising_polynomial(kShortExp, r); }

  static Split product(__m128 x, __m128 y) {
    const auto [e, z] = reduce(x);
    const __m128 s = z / (z + 2.0f);
    const __m128 t = y * (e + s * rising_polynomial(kShortLog, s * s));
    const __m128 k = to_grid<1>(t).multiple;
    return {k, t - k, t};
  }
};

static inline bool in_range(__m128 t) {
  return in_all_lanes(_mm_cmplt_ps(magnitude_of(t), all_lanes(125.0f)));
}

template <class Grade>
static inline __m128 power(const Split& t) {
  const __m128 fraction = Grade::fraction_power(t.r) * t.r + 1.0f;
  return fraction * powers_of_two(t.k);
}

// Below 2^-40 the power is 1 as it is with 0; the products would be subnormal.
static inline __m128 zero_if_tiny(__m128 y) {
  return _mm_and_ps(y, _mm_cmplt_ps(all_lanes(0x1p-40f), magnitude_of(y)));
}

static inline __m128 four_exponents(EachExponent<float> y, int32_t i) {
  return zero_if_tiny(load_lanes(y.y + i));
}
static inline __m128 four_exponents(OneExponent<float> y, int32_t) {
  return zero_if_tiny(load_all_lanes(y.y));
}

template <class Grade, class Exponent>
static inline int32_t packed_blocks(const float* x, Exponent y, float* dst, int32_t i,
                                    int32_t last) {
  for (; i < last && in_domain<kBlock, too_large>(x, y, i); i += kBlock) {
    const Split a = Grade::product(load_lanes(x + i), four_exponents(y, i));
    const Split b = Grade::product(load_lanes(x + i + 4), four_exponents(y, i + 4));
    if (!in_range(a.whole) || !in_range(b.whole)) break;
    const __m128 first = power<Grade>(a), second = power<Grade>(b);
    store_lanes(dst + i, first);
    store_lanes(dst + i + 4, second);
  }
  _mm_empty();
  return i;
}

// An ordinary element comes out the same whatever stands beside it.
template <class Grade>
static inline bool packed_element(const float* x, const float* y, float* dst) {
  const Split t = Grade::product(load_all_lanes(x), zero_if_tiny(load_all_lanes(y)));
  const bool ordinary = in_range(t.whole);
  if (ordinary) store_lane(dst, power<Grade>(t));
  _mm_empty();
  return ordinary;
}

template <class Grade, class Exponent>
static Status pow_packed(const Arrays<float>& arrays, Exponent y, int32_t len) {
  const float* const x = arrays.src1;
  float* const dst = arrays.dst1;
  return run_kernel<BothNearest<X87_DOUBLE>, kBlock>(
      arrays, len,
      [=](int32_t i, int32_t last) { return packed_blocks<Grade>(x, y, dst, i, last); },
      [&](int32_t i, Status* status) {
        if (!in_domain<1, too_large>(x, y, i) || !packed_element<Grade>(x + i, y.at(i), dst + i))
          pow_special(arrays, y.at(i), i, status, finite_pow);
      });
}

#endif
