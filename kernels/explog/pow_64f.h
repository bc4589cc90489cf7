// SPDX-License-Identifier: MIT
//
// Powers of double-precision arrays: what Pow and Powx share; they differ in where the exponent
// stands. On the x87 unit at 64-bit precision, by the method of pow_extended.h.
//
// A53 follows it to the letter: the power to 2^-62, 0.003 ulp, before the only rounding.
//
// A50 takes log2 x and t as one extended number each and the powers of two as doubles: t's relative
// error of 2^-62.5 is 2^-53 of the power, the two tables' 2^-53.
//
//   ordinary elements   blocks of four: x a positive normal number, 2^-512 <= |y| < 2^64,
//                       |t| < 1021; n is added to the exponent of the stored result, a normal
//                       number. Other y only leave a power of 1 or none in range, and the double r
//                       would leave its own.
//   others              one by one as A53 in either grade, scaled before the only rounding
//
// Worst errors found: A53 0.5011 ulp at (0x3FF38DDCAB46DBC2, 0xC01BAC116D81E845), A50 2.1343 ulp at
// (0x3FEFFFFFFFFFFFEF, 0xC38DAE588C09E8CF) (sampled against 250 bits).
#ifndef LUX_KERNELS_EXPLOG_POW_64F_H
#define LUX_KERNELS_EXPLOG_POW_64F_H

#include <xmmintrin.h>

#include "kernels/explog/pow_extended.h"
#include "kernels/explog/pow_special.h"

constexpr int32_t kBlock = 4;
// Upper words.
constexpr uint32_t kSmallestNormal = 0x00100000;  // 2^-1022
constexpr uint32_t kFraction = kSmallestNormal - 1;
constexpr uint32_t kOne = 0x3FF00000;
constexpr uint32_t kLargest = 0x7FEFFFFF;
constexpr uint32_t kSmallExponent = 0x1FF00000;  // 2^-512
constexpr uint32_t kLargeExponent = 0x43F00000;  // 2^64

alignas(16) static const uint32_t kFractionMask[4] = {~0u, kFraction, ~0u, kFraction};
alignas(16) static const uint32_t kOnes[4] = {0, kOne, 0, kOne};
alignas(16) static const uint32_t kUpperMask[4] = {0, ~0u, 0, ~0u};

static inline __m128 pattern(const uint32_t* four) {
  return _mm_load_ps(reinterpret_cast<const float*>(four));
}
static inline __m128 load_two(const double* from) {
  return _mm_loadu_ps(reinterpret_cast<const float*>(from));
}
static inline void store_two(double* to, __m128 two) {
  _mm_store_ps(reinterpret_cast<float*>(to), two);
}

// The sign bit tells whether x is no positive normal number, or y is out of bounds.
static inline uint32_t outside(const double* x) {
  const uint32_t u = upper_word(x);
  return (u - kSmallestNormal) | (kLargest - u);
}
static inline uint32_t exponent_outside(const double* y) {
  const uint32_t b = upper_magnitude(y);
  return (b - kSmallExponent) | (kLargeExponent - 1 - b);
}

static inline uint32_t any_exponent_outside(EachExponent<double> y, int32_t i) {
  uint32_t any = 0;
  for (int lane = 0; lane < kBlock; ++lane) any |= exponent_outside(y.at(i + lane));
  return any;
}
static inline uint32_t any_exponent_outside(OneExponent<double> y, int32_t) {
  return exponent_outside(y.y);
}

template <class Exponent>
static inline bool in_domain(const double* x, Exponent y, int32_t i) {
  uint32_t any = any_exponent_outside(y, i);
  for (int lane = 0; lane < kBlock; ++lane) any |= outside(x + i + lane);
  return int32_t(any) >= 0;
}

static inline bool in_domain(const double* x, const double* y) {
  return int32_t(outside(x) | exponent_outside(y)) >= 0;
}

static inline int32_t exponent_of(uint32_t upper) { return int32_t(upper >> 20) - 1023; }

// ---- A50: one extended number each

static inline long double log2_short(const double* m, uint32_t upper, int32_t e) {
  const ExtendedTable& table = table_anew();
  const auto& cell = cell_of(table, upper);
  const long double z = (long double)*m * cell.reciprocal - 1.0f;
  const long double tail = (upper_terms(table, z) + table.c1_high) * z + table.c0_low;
  return (tail + table.c0_high) * z + cell.low + (e + (long double)cell.high);
}

static inline void product(long double log, const double* y, GridPoint* t) {
  const long double whole = log * *y;
  put_grid(&t->grid, whole);
  put(&t->r, whole - grid_point(&t->grid));
}

// |t| < 1021: the words are those of the shifter plus a small k.
static inline bool in_range(const double* grid) {
  constexpr uint32_t kShifter = 0x42680000, kBound = 1021 << 13;
  const Words words = load_words(grid);
  return words.lower + kBound < 2 * kBound && words.upper + (words.lower >> 31) == kShifter;
}

static uint64_t finite_pow(uint64_t pattern, const double* y) {
  double x;
  store_bits(&x, pattern);
  x = store_f64(double(extended_pow(&x, y)));
  return load_bits(&x);
}

// ---- Ordinary elements, whole blocks or one. The results are normal numbers; nothing is stored
// otherwise.

static inline __m128 load_one(const double* from) {
  return _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(from));
}

// The leading 21 bits of y and the rest, from arrays or once for all.
struct EachSplit {
  EachExponent<double> y;
  const double* at(int32_t i) const { return y.at(i); }
};
struct OneSplit {
  OneExponent<double> y;
  double high, low;
  const double* at(int32_t i) const { return y.at(i); }
};
static inline EachSplit split(EachExponent<double> y) { return {y}; }
static inline OneSplit split(OneExponent<double> y) {
  OneSplit parts = {y, 0, 0};
  _mm_storel_pi(reinterpret_cast<__m64*>(&parts.high),
                _mm_and_ps(load_one(y.y), pattern(kUpperMask)));
  put(&parts.low, (long double)*y.y - parts.high);
  return parts;
}

template <bool kLong, int kCount, class Split>
static inline bool pow_ordinary(const double* x, const Split& y, double* dst, int32_t i) {
  constexpr bool kEach = __is_same(Split, EachSplit);
  alignas(16) double m[kCount + kCount % 2], y_high[kCount + kCount % 2];
  GridPoint t[kCount];
  for (int lane = 0; lane < kCount; lane += 2) {
    const __m128 bases = kCount == 1 ? load_one(x + i) : load_two(x + i + lane);
    store_two(m + lane, _mm_or_ps(_mm_and_ps(bases, pattern(kFractionMask)), pattern(kOnes)));
    if constexpr (kLong && kEach) {
      const __m128 exponents = kCount == 1 ? load_one(y.at(i)) : load_two(y.at(i + lane));
      store_two(y_high + lane, _mm_and_ps(exponents, pattern(kUpperMask)));
    }
  }
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const uint32_t upper = upper_word(x + i + lane);
    const double* const exponent = y.at(i + lane);
    if constexpr (kLong) {
      const Log log = log2_long(m + lane, upper, exponent_of(upper));
      if constexpr (kEach)
        product(log, *exponent, y_high[lane], *exponent - (long double)y_high[lane], t + lane);
      else
        product(log, *exponent, y.high, y.low, t + lane);
    } else {
      product(log2_short(m + lane, upper, exponent_of(upper)), exponent, t + lane);
    }
  }
  bool ordinary = true;
  for (const GridPoint& each : t) ordinary &= in_range(&each.grid);
  if (!ordinary) return false;
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const ScaledPower power = exp2_of<kLong>(t[lane]);
    put(dst + i + lane, power.value);
    reinterpret_cast<WordInMemory*>(dst + i + lane)[1] += uint32_t(power.k >> 13) << 20;
  }
  return true;
}

template <bool kLong, class Exponent>
static Status pow_64f(const Arrays<double>& arrays, Exponent y, int32_t len) {
  const double* const x = arrays.src1;
  double* const dst = arrays.dst1;
  return run_kernel<X87Nearest<X87_EXTENDED>, kBlock>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        if (i == last || !in_domain(x, y, i)) return i;  // it may not be possible to split y
        const auto parts = split(y);
        while (i < last && in_domain(x, y, i) && pow_ordinary<kLong, kBlock>(x, parts, dst, i))
          i += kBlock;
        return i;
      },
      [&](int32_t i, Status* status) {
        if (!in_domain(x + i, y.at(i)) || !pow_ordinary<kLong, 1>(x, split(y), dst, i))
          pow_special(arrays, y.at(i), i, status, finite_pow);
      });
}

#endif
