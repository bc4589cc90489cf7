// SPDX-License-Identifier: MIT
//
// Powers of double-precision arrays: what Pow and Powx share; they differ in where the exponent
// stands. On the x87 unit at 64-bit precision:
//
//   x = 2^e m, 1 <= m < 2, i = round(512 (m - 1)), z = m R[i] - 1 exactly (R has 11 bits),
//   log2 x = (e + log2(1/R[i])) + c0 z + c1 z^2 + ... + c6 z^7,
//   t = y log2 x, k = round(2^13 t), r = t - k/2^13, |r| <= 2^-14, k = (n 64 + j1) 128 + j0,
//   2^t = 2^n (T + T r (e0 + r (e1 + r e2))), T = T1[j1] T0[j0].
//
//   R[0] = 1 and R[512] = 1/2, so that nothing cancels next to 1.
//
// A53 carries 70 bits of the logarithm and of t, since t reaches 1075:
//
//   z = zh + zl, zh a single; c0 = c0h + c0l, c0h a single: c0h zh is exact;
//   lh = e + L + c0h zh rounded to a single, what it leaves is exact;
//   ll = that + c0h zl + c0l z + c1 z^2 + ...: its roundings are 2^-73 of the logarithm;
//   y = yh + yl, yh its leading 21 bits: yh lh and yl lh are exact, t = yh lh + (yl lh + y ll).
//
//   Fits and roundings together stay below 2^-62 of the power, 0.003 ulp.
//
// A50 takes log2 x and t as one extended number each and the powers of two as doubles: t's relative
// error of 2^-62.5 is 2^-53 of the power, the two tables' 2^-53.
//
//   ordinary elements   blocks of four: x a positive normal number, y finite, |t| < 1021; n is
//   added
//                       to the exponent of the stored result, which is a normal number
//   others              one by one as A53 in either grade, scaled before the only rounding; but
//                       what only its neighbours brought here comes out as in a block
#ifndef LUX_KERNELS_EXPLOG_POW_64F_H
#define LUX_KERNELS_EXPLOG_POW_64F_H

#include <xmmintrin.h>

#include "kernels/explog/pow_64f_table.h"  // static_const_table
#include "kernels/explog/pow_special.h"

constexpr int32_t kBlock = 4;
// Upper words.
constexpr uint32_t kSmallestNormal = 0x00100000;  // 2^-1022
constexpr uint32_t kFraction = kSmallestNormal - 1;
constexpr uint32_t kOne = 0x3FF00000;
constexpr uint32_t kLargest = 0x7FEFFFFF;

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

// The sign bit tells whether x is no positive normal number or y is not finite.
static inline uint32_t outside(const double* x, const double* y) {
  const uint32_t u = upper_word(x);
  return (u - kSmallestNormal) | (kLargest - u) |
         (kLargest - (upper_word(y) & ~Format<float>::kSign));
}

template <class Exponent>
static inline bool in_domain(const double* x, Exponent y, int32_t i) {
  uint32_t any = 0;
  for (int lane = 0; lane < kBlock; ++lane) any |= outside(x + i + lane, y.at(i + lane));
  return int32_t(any) >= 0;
}

// A bare store: the compiler must neither round in passing nor keep a copy that is not rounded.
static inline void put(float* to, long double value) {
  asm("fstps %0" : "=m"(*to) : "t"(value) : "st");
}
static inline void put(double* to, long double value) {
  asm("fstpl %0" : "=m"(*to) : "t"(value) : "st");
}

// The table by a pointer that the compiler takes for a new one at each element. It would load
// constants once for several elements and spill them as extended numbers, at the price of four
// operations each.
static inline const auto& table_anew() {
  const auto* table = &static_const_table;
  asm volatile("" : "+r"(table));
  return *table;
}

// ---- Logarithm of 2^e m; `upper` is a word with the fraction of m's upper word

using Table = decltype(static_const_table);

static inline const auto& cell_of(const Table& table, uint32_t upper) {
  return table.cell[((upper & kFraction) + 0x400) >> 11];
}

// c2 z + ... + c6 z^5
static inline long double upper_terms(const Table& table, long double z) {
  const auto& c = table.c;
  return ((((c[0] * z + c[1]) * z + c[2]) * z + c[3]) * z + c[4]) * z;
}

struct Log {
  float high;
  long double low;
};

static inline Log log2_long(const double* m, uint32_t upper, int32_t e) {
  const Table& table = table_anew();
  const auto& cell = cell_of(table, upper);
  const long double z = (long double)*m * cell.reciprocal - 1.0f;
  float z_high, high;
  asm("fsts %0" : "=m"(z_high) : "t"(z));
  const long double z_low = z - z_high;
  long double low = ((upper_terms(table, z) + table.c1_high + table.c1_low) * z + table.c0_low) * z;
  low += z_low * table.c0_high + cell.low;
  const long double head = (long double)z_high * table.c0_high, whole = e + (long double)cell.high;
  put(&high, whole + head);
  return {high, ((whole - high) + head) + low};
}

static inline long double log2_short(const double* m, uint32_t upper, int32_t e) {
  const Table& table = table_anew();
  const auto& cell = cell_of(table, upper);
  const long double z = (long double)*m * cell.reciprocal - 1.0f;
  const long double tail = (upper_terms(table, z) + table.c1_high) * z + table.c0_low;
  return (tail + table.c0_high) * z + cell.low + (e + (long double)cell.high);
}

// ---- Product and power

// k as the low word of a double, t = k/8192 + r.
struct Reduced {
  double grid, r;
};

static inline void put_grid(double* to, long double t) { put(to, t + static_const_table.shifter); }
static inline long double grid_point(const double* grid) {
  return *grid - (long double)static_const_table.shifter;
}

static inline void product(const Log& log, const double* y, const double* y_high, Reduced* t) {
  const long double exponent = *y;
  const long double high = (long double)*y_high * log.high;
  const long double low = (exponent - *y_high) * log.high + exponent * log.low;
  put_grid(&t->grid, high + low);
  put(&t->r, (high - grid_point(&t->grid)) + low);
}

static inline void product(long double log, const double* y, Reduced* t) {
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

struct Power {
  long double value;  // to be multiplied by 2^floor(k/8192)
  int32_t k;
};

template <bool kLong>
static inline long double entry(const Pair& pair) {
  return kLong ? (long double)pair.high + pair.low : (long double)pair.high;
}

template <bool kLong>
static inline Power exp2_of(const Reduced& t) {
  const Table& table = table_anew();
  const int32_t k = int32_t(load_words(&t.grid).lower);
  const long double power =
      entry<kLong>(table.coarse[k >> 7 & 63]) * entry<kLong>(table.fine[k & 127]);
  return {((table.e[0] * t.r + table.e[1]) * t.r + table.e[2]) * t.r * power + power, k};
}

// The power of a finite positive base, and a finite exponent, rounded once. An ordinary element
// comes out the same as in a block.
template <bool kLong>
static uint64_t finite_pow(uint64_t x, const double* y) {
  constexpr int kFractionBits = Format<double>::kFractionBits;
  int32_t e = -Format<double>::kBias;
  uint64_t normal = x;
  if (x >> kFractionBits == 0) {
    const int shift = __builtin_clzll(x) - 11;
    normal <<= shift;
    e -= shift;
  }
  e += int32_t(normal >> kFractionBits);
  double m;
  store_bits(&m, (normal & ((uint64_t(1) << kFractionBits) - 1)) | Format<double>::kOne);
  Reduced t;
  if constexpr (kLong) {
    double y_high;
    store_bits(&y_high, load_bits(y) & 0xFFFFFFFF00000000u);
    const Log log = log2_long(&m, upper_word(&m), e);
    const long double about = (long double)log.high * *y;
    if (about > 1500.0f) return Format<double>::kInf;
    if (about < -1500.0f) return 0;
    product(log, y, &y_high, &t);
  } else {
    product(log2_short(&m, upper_word(&m), e), y, &t);
    if (normal != x || !in_range(&t.grid)) return finite_pow<true>(x, y);
  }
  const Power power = exp2_of<kLong>(t);
  const double rounded = store_f64(double(power.value * power_of_two(power.k >> 13)));
  return load_bits(&rounded);
}

// ---- Blocks. The results are normal numbers; nothing is stored otherwise.

static inline __m128 two_exponents(EachExponent<double> y, int32_t i) { return load_two(y.y + i); }
static inline __m128 two_exponents(OneExponent<double> y, int32_t) {
  const __m128 one = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(y.y));
  return _mm_movelh_ps(one, one);
}

static inline int32_t exponent_of(uint32_t upper) { return int32_t(upper >> 20) - 1023; }

template <bool kLong, class Exponent>
static inline bool pow_block(const double* x, Exponent y, double* dst, int32_t i) {
  alignas(16) double m[kBlock], y_high[kBlock];
  Reduced t[kBlock];
  for (int lane = 0; lane < kBlock; lane += 2) {
    store_two(m + lane, _mm_or_ps(_mm_and_ps(load_two(x + i + lane), pattern(kFractionMask)),
                                  pattern(kOnes)));
    if (kLong)
      store_two(y_high + lane, _mm_and_ps(two_exponents(y, i + lane), pattern(kUpperMask)));
  }
#pragma GCC unroll 4
  for (int lane = 0; lane < kBlock; ++lane) {
    const uint32_t upper = upper_word(x + i + lane);
    const double* const exponent = y.at(i + lane);
    if constexpr (kLong) {
      const Log log = log2_long(m + lane, upper, exponent_of(upper));
      product(log, exponent, y_high + lane, t + lane);
    } else {
      product(log2_short(m + lane, upper, exponent_of(upper)), exponent, t + lane);
    }
  }
  bool ordinary = true;
  for (const Reduced& each : t) ordinary &= in_range(&each.grid);
  if (!ordinary) return false;
#pragma GCC unroll 4
  for (int lane = 0; lane < kBlock; ++lane) {
    const Power power = exp2_of<kLong>(t[lane]);
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
        for (; i < last && in_domain(x, y, i) && pow_block<kLong>(x, y, dst, i); i += kBlock) {
        }
        return i;
      },
      [&](int32_t i, Status* status) {
        pow_special(arrays, y.at(i), i, status, finite_pow<kLong>);
      });
}

#endif
