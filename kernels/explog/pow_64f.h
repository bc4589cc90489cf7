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
//   ordinary elements   blocks of four: |x| a normal number, 2^-512 <= |y| < 2^64, |t| < 1021; n
//                       is added to the exponent of the stored result, a normal number, and the
//                       sign that a negative base has from a whole exponent. Other y only leave a
//                       power of 1 or none in range, and the double r would leave its own.
//   others              one by one as A53 in either grade, scaled before the only rounding
//
// Worst errors found: A53 0.5011 ulp at (0x3FF38DDCAB46DBC2, 0xC01BAC116D81E845), A50 2.1343 ulp at
// (0x3FEFFFFFFFFFFFEF, 0xC38DAE588C09E8CF) (sampled against 250 bits).
#ifndef LUX_KERNELS_EXPLOG_POW_64F_H
#define LUX_KERNELS_EXPLOG_POW_64F_H

#include "kernels/explog/pow_extended.h"
#include "kernels/explog/pow_special.h"
#include "kernels/lanes.h"

constexpr int32_t kBlock = 4;
// Upper words.
constexpr uint32_t kSmallExponent = 0x1FF00000;  // 2^-512
constexpr uint32_t kLargeExponent = 0x43F00000;  // 2^64

// Of an exponent, in the sign bit: out of bounds.
static inline uint32_t exponent_outside(const double* y) {
  return outside(upper_magnitude(y), kSmallExponent, kLargeExponent);
}

// ---- A50: one extended number each

static inline long double log2_short(const double* m, uint32_t upper, int32_t e) {
  const ExtendedTable& table = table_anew();
  const auto& cell = cell_of(table, upper);
  const long double z = (long double)*m * cell.reciprocal - 1.0f;
  const long double tail = (upper_terms(table, z) + table.c1_high) * z + table.c0_low;
  return (tail + table.c0_high) * z + cell.low + (e + (long double)cell.high);
}

static inline void product(long double log, const double* y, GridPoint* t) {
  const long double whole = log * in_memory(y);
  put_grid(&t->grid, whole);
  put(&t->r, whole - grid_point(&t->grid));
}

// |t| < 1021: the words are those of the shifter plus a small k.
static inline bool in_range(const double* grid) {
  constexpr uint32_t kShifter = 0x42680000, kBound = 1021 << 13;
  const Words words = load_words(grid);
  return words.lower + kBound < 2 * kBound && words.upper + (words.lower >> 31) == kShifter;
}

static uint64_t finite_pow(const double* x, const double* y) {
  const double power = store_f64(double(extended_pow(x, y)));
  return load_bits(&power);
}

// ---- Ordinary elements, whole blocks or one. The results are normal numbers; nothing is stored
// otherwise.

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
  store_half(&parts.high, _mm_and_ps(load_half(y.y), lanes_of(kUpperWords)));
  put(&parts.low, (long double)in_memory(y.y) - parts.high);
  return parts;
}

template <bool kLong, int kCount, class Split>
static inline bool pow_ordinary(const double* x, const Split& y, double* dst, int32_t i,
                                const uint32_t* sign) {
  constexpr bool kEach = __is_same(Split, EachSplit);
  alignas(16) double m[kCount + kCount % 2], y_high[kCount + kCount % 2];
  GridPoint t[kCount];
  for (int lane = 0; lane < kCount; lane += 2) {
    const __m128 bases = kCount == 1 ? load_half(x + i) : load_pair(x + i + lane);
    store_pair(m + lane, _mm_or_ps(_mm_and_ps(bases, lanes_of(kFractions)), lanes_of(kOnes)));
    if constexpr (kLong && kEach) {
      const __m128 exponents = kCount == 1 ? load_half(y.at(i)) : load_pair(y.at(i + lane));
      store_pair(y_high + lane, _mm_and_ps(exponents, lanes_of(kUpperWords)));
    }
  }
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const uint32_t upper = upper_magnitude(x + i + lane);
    const double* const exponent = y.at(i + lane);
    if constexpr (kLong) {
      const Log log = log2_long(m + lane, upper, exponent_of(upper));
      if constexpr (kEach) {
        product(log, in_memory(exponent), y_high[lane],
                in_memory(exponent) - (long double)y_high[lane], t + lane);
      } else {
        const OneSplit& parts = anew(y);
        product(log, in_memory(parts.y.y), parts.high, parts.low, t + lane);
      }
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
    add_to_upper_word(dst + i + lane, (uint32_t(power.k >> 13) << 20) + sign[lane]);
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
        if (i == last || sign_bit(any_outside<kBlock, exponent_outside>(y, i)))
          return i;  // it may not be possible to split y
        const auto parts = split(y);
        uint32_t own[kBlock];
        for (; i < last; i += kBlock) {
          const uint32_t* const sign = signs_in_domain<kBlock, exponent_outside>(x, y, i, own);
          if (!sign || !pow_ordinary<kLong, kBlock>(x, parts, dst, i, sign)) break;
        }
        return i;
      },
      [&](int32_t i, Status* status) {
        // The short step is the quicker one; the bits are A53's either way.
        const bool in_block = kLong && i < len - len % kBlock;
        uint32_t own;
        const uint32_t* const sign =
            in_block ? nullptr : signs_in_domain<1, exponent_outside>(x, y, i, &own);
        if (!sign || !pow_ordinary<kLong, 1>(x, split(y), dst, i, sign))
          pow_special(arrays, y.at(i), i, status, finite_pow);
      });
}

#endif
