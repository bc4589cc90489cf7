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

#include "kernels/lanes.h"
#include "kernels/explog/generated/pow_32f_table.h"  // static_const_table
#include "kernels/explog/pow_extended.h"
#include "kernels/explog/pow_special.h"

constexpr int32_t kBlock = 8;
constexpr uint32_t kSmallestNormal = 0x00800000;  // 2^-126
constexpr uint32_t kFraction = kSmallestNormal - 1;
constexpr uint32_t kLargest = Format<float>::kInf - 1;
constexpr uint32_t kLargeExponent = 0x4F000000;  // 2^31

// The sign bit tells whether x is no positive normal number, or y is too large or a NaN.
static inline uint32_t outside(const float* x) {
  const uint32_t u = load_bits(x);
  return (u - kSmallestNormal) | (kLargest - u);
}
static inline uint32_t too_large(const float* y) {
  return kLargeExponent - 1 - magnitude<float>(load_bits(y));
}

static inline uint32_t any_too_large(EachExponent<float> y, int32_t i) {
  uint32_t any = 0;
  for (int lane = 0; lane < kBlock; ++lane) any |= too_large(y.at(i + lane));
  return any;
}
static inline uint32_t any_too_large(OneExponent<float> y, int32_t) { return too_large(y.y); }

template <class Exponent>
static inline bool in_domain(const float* x, Exponent y, int32_t i) {
  uint32_t any = any_too_large(y, i);
  for (int lane = 0; lane < kBlock; ++lane) any |= outside(x + i + lane);
  return int32_t(any) >= 0;
}

static inline bool in_domain(const float* x, const float* y) {
  return int32_t(outside(x) | too_large(y)) >= 0;
}

static inline __m128 everywhere(uint32_t pattern) {
  float value;
  store_bits(&value, pattern);
  return _mm_set1_ps(value);
}

static inline __m128 significands(__m128 x) {
  return _mm_or_ps(_mm_and_ps(x, everywhere(kFraction)), everywhere(Format<float>::kOne));
}

// ---- x87

// Of m times 2^(exponent field of `bits` - 127); m and `bits` have one fraction.
static inline double log2_of(float m, uint32_t bits) {
  const auto& table = static_const_table;
  const auto& cell = table.cell[((bits & kFraction) + 0x4000) >> 15];
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
  asm("fstl %0" : "=m"(grid) : "t"(u));
  const int32_t k = int32_t(load_words(&grid).lower);
  const double r = t - (u - table.shifter);
  return {((r + table.d1) * r + table.d0) * table.power[k & 255], k};
}

// The power of a finite positive base, and a finite exponent, so precise before its only rounding
// that infinity and zero begin where they should.
static uint32_t finite_pow(uint32_t pattern, const float* y) {
  float x;
  store_bits(&x, pattern);
  const double base = store_f64(x), exponent = store_f64(*y);
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
                 significands(kCount == 1 ? load_lane(x + i) : _mm_loadu_ps(x + i + lane)));
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane)
    t[lane] = log2_of(m[lane], load_bits(x + i + lane)) * *y.at(i + lane);
  uint32_t below = ~0u;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane)
    below &= (upper_word(t + lane) & ~Format<float>::kSign) - kBound;
  if (int32_t(below) >= 0) return false;
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
        while (i < last && in_domain(x, y, i) && x87_ordinary<kBlock>(x, y, dst, i)) i += kBlock;
        return i;
      },
      [&](int32_t i, Status* status) {
        if (!in_domain(x + i, y.at(i)) || !x87_ordinary<1>(x, y, dst, i))
          pow_special(arrays, y.at(i), i, status, finite_pow);
      });
}

// ---- Packed

struct SseAndX87Nearest {
  X87Nearest<X87_DOUBLE> x87;
  SseNearest sse;
  void leave() const {
    sse.leave();
    x87.leave();
  }
};

static inline __m128 times(__m128 a, __m128 b) { return _mm_mul_ps(a, b); }
static inline __m128 plus(__m128 a, __m128 b) { return _mm_add_ps(a, b); }
static inline __m128 minus(__m128 a, __m128 b) { return _mm_sub_ps(a, b); }
static inline __m128 all(float value) { return _mm_set1_ps(value); }

// The leading 12 bits.
static inline __m128 leading(__m128 a) { return _mm_and_ps(a, everywhere(0xFFFFF000)); }

template <int kTerms>
static inline __m128 polynomial(const float (&c)[kTerms], __m128 x) {
  __m128 sum = all(c[kTerms - 1]);
#pragma GCC unroll 8
  for (int i = kTerms - 2; i >= 0; --i) sum = plus(times(sum, x), all(c[i]));
  return sum;
}

// 2^k of integers from -126 to 127: k is put into the exponent field as an integer.
static inline __m128 powers_of_two(__m128 k) {
  const __m128 field = plus(times(k, all(0x1p23f)), all(0x1.fcp29f));  // 127 2^23
  __m64 pairs[2] = {_mm_cvtps_pi32(field), _mm_cvtps_pi32(_mm_movehl_ps(field, field))};
  asm("" : "+m"(pairs));
  return _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), pairs), pairs + 1);
}

// x = 2^e (z + 1), sqrt(1/2) <= z + 1 < sqrt(2)
struct Base {
  __m128 e, z;
};

static inline Base reduce(__m128 x) {
  alignas(16) int32_t fields[4];
  _mm_store_ps(reinterpret_cast<float*>(fields), _mm_and_ps(x, everywhere(Format<float>::kInf)));
  const __m128 m = significands(x), above = _mm_cmplt_ps(all(0x1.6a09e6p+0f), m);
  const __m128 bias = minus(all(127.0f), _mm_and_ps(above, all(1.0f)));
  return {minus(times(from_integers(fields), all(0x1p-23f)), bias),
          minus(minus(m, _mm_and_ps(above, times(m, all(0.5f)))), all(1.0f))};
}

// 2^(k + r)
struct Split {
  __m128 k, r, whole;  // `whole` to be tested against the range
};

static inline __m128 nearest_integers(__m128 t) {
  return minus(plus(t, all(0x1.8p23f)), all(0x1.8p23f));
}

struct A21 {
  static __m128 fraction_power(__m128 r) { return polynomial(kLongExp, r); }

  static Split product(__m128 x, __m128 y) {
    const auto [e, z] = reduce(x);
    const __m128 inverse = _mm_div_ps(all(1.0f), plus(z, all(2.0f)));
    const __m128 s_high = leading(times(z, inverse)), z_high = leading(z);
    const __m128 remainder = minus(minus(minus(z, plus(s_high, s_high)), times(s_high, z_high)),
                                   times(s_high, minus(z, z_high)));
    const __m128 s_low = times(remainder, inverse), s = plus(s_high, s_low), s2 = times(s, s);
    const __m128 tail = plus(times(s_low, all(kLogHigh)),
                             times(s, plus(times(s2, polynomial(kLogTail, s2)), all(kLogLow))));
    const __m128 head = times(s_high, all(kLogHigh)), sum = plus(e, head);
    const __m128 lost = minus(head, minus(sum, e));
    const __m128 l_high = leading(sum), l_low = plus(minus(sum, l_high), plus(lost, tail));
    const __m128 y_high = leading(y);
    const __m128 t_high = times(y_high, l_high);
    const __m128 t_low = plus(times(minus(y, y_high), l_high), times(y, l_low));
    const __m128 t = plus(t_high, t_low), k = nearest_integers(t);
    return {k, plus(minus(t_high, k), t_low), t};
  }
};

struct A11 {
  static __m128 fraction_power(__m128 r) { return polynomial(kShortExp, r); }

  static Split product(__m128 x, __m128 y) {
    const auto [e, z] = reduce(x);
    const __m128 s = _mm_div_ps(z, plus(z, all(2.0f)));
    const __m128 t = times(y, plus(e, times(s, polynomial(kShortLog, times(s, s)))));
    const __m128 k = nearest_integers(t);
    return {k, minus(t, k), t};
  }
};

static inline bool in_range(__m128 t) {
  const __m128 a = _mm_and_ps(t, everywhere(~Format<float>::kSign));
  return _mm_movemask_ps(_mm_cmplt_ps(a, all(125.0f))) == 15;
}

template <class Grade>
static inline __m128 power(const Split& t) {
  const __m128 fraction = plus(times(Grade::fraction_power(t.r), t.r), all(1.0f));
  return times(fraction, powers_of_two(t.k));
}

// Below 2^-40 the power is 1 as it is with 0; the products would be subnormal.
static inline __m128 zero_if_tiny(__m128 y) {
  return _mm_and_ps(y, _mm_cmplt_ps(all(0x1p-40f), magnitude_of(y)));
}

static inline __m128 four_exponents(EachExponent<float> y, int32_t i) {
  return zero_if_tiny(_mm_loadu_ps(y.y + i));
}
static inline __m128 four_exponents(OneExponent<float> y, int32_t) {
  return zero_if_tiny(load_everywhere(y.y));
}

template <class Grade, class Exponent>
static inline int32_t packed_blocks(const float* x, Exponent y, float* dst, int32_t i,
                                    int32_t last) {
  for (; i < last && in_domain(x, y, i); i += kBlock) {
    const Split a = Grade::product(_mm_loadu_ps(x + i), four_exponents(y, i));
    const Split b = Grade::product(_mm_loadu_ps(x + i + 4), four_exponents(y, i + 4));
    if (!in_range(a.whole) || !in_range(b.whole)) break;
    const __m128 first = power<Grade>(a), second = power<Grade>(b);
    _mm_storeu_ps(dst + i, first);
    _mm_storeu_ps(dst + i + 4, second);
  }
  _mm_empty();
  return i;
}

// An ordinary element comes out the same whatever stands beside it.
template <class Grade>
static inline bool packed_element(const float* x, const float* y, float* dst) {
  if (!in_domain(x, y)) return false;
  const Split t = Grade::product(load_everywhere(x), zero_if_tiny(load_everywhere(y)));
  const bool ordinary = in_range(t.whole);
  if (ordinary) store_lane(dst, power<Grade>(t));
  _mm_empty();
  return ordinary;
}

template <class Grade, class Exponent>
static Status pow_packed(const Arrays<float>& arrays, Exponent y, int32_t len) {
  const float* const x = arrays.src1;
  float* const dst = arrays.dst1;
  return run_kernel<SseAndX87Nearest, kBlock>(
      arrays, len,
      [=](int32_t i, int32_t last) { return packed_blocks<Grade>(x, y, dst, i, last); },
      [&](int32_t i, Status* status) {
        if (!packed_element<Grade>(x + i, y.at(i), dst + i))
          pow_special(arrays, y.at(i), i, status, finite_pow);
      });
}

#endif
