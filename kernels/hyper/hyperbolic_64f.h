// SPDX-License-Identifier: MIT
//
// What hyperbolic sine and cosine of double-precision arrays share, on the x87 unit at 64-bit
// precision.
//
//   j = round(64 |x|), r = |x| - x[j] exactly, |r| <= 1/128 + 2^-9,
//   p = cosh r - 1 and q = sinh r by the terms of their series to r^6 and r^7,
//   cosh |x| = C + (C p + S q),  sinh |x| = S + (S p + C q + Sl),
//   C = cosh x[j], S + Sl = sinh x[j].
//
//   The points x[j] are singles near j/64 where C is a double as good as exactly. Nothing cancels
//   near zero: in cell 0 the sine is q.
//
//   |x| < 23      blocks of four, as above
//   beyond        cosh |x| = sinh |x| = 2^m cosh(|x| - m ln 2) but for 2^-64, m such that the table
//                 serves; ln 2 in two parts, of which the first leaves no error. m is added to
//                 the exponent of the stored result.
//
// A53: the fits are off by 2^-69 of the result, C by 2^-61.8, a double S beside q by 2^-61, the
// roundings together by about 2^-62: 0.01 ulp.
// A50: a term less of each series, which moves a result by 2^-54, and no Sl: up to half a unit of
// S.
#ifndef LUX_KERNELS_HYPER_HYPERBOLIC_64F_H
#define LUX_KERNELS_HYPER_HYPERBOLIC_64F_H

#include "kernels/hyper/cells_64f.h"
#include "kernels/hyper/generated/hyperbolic_64f_table.h"  // kDoubleCell, series, ln 2

constexpr uint64_t kOverflow = 0x408633CE8FB9F87E;  // 710.47586: both functions round to infinity
// Upper words.
constexpr uint32_t kTableEnd = 0x40370000;  // 23.0
constexpr uint32_t kWideEnd = kOverflow >> 32;

enum Function { kCosh, kSinh };
enum Grade { kA53, kA50 };

// cosh or sinh of the cell's point plus r.
template <Function kFunction, Grade kGrade>
static inline long double value(const DoubleCell& cell, long double r) {
  const long double z = r * r;
  const double leading = kFunction == kCosh ? cell.cosh : cell.sinh;
  const double other = kFunction == kCosh ? cell.sinh : cell.cosh;
  const auto& cosh_long = anew(kCoshLong);
  const auto& cosh_short = anew(kCoshShort);
  const auto& sinh_long = anew(kSinhLong);
  const auto& sinh_short = anew(kSinhShort);
  long double p, q;
  if (kGrade == kA53)
    p = ((cosh_long[2] * z + cosh_long[1]) * z + cosh_long[0]) * z;
  else
    p = (cosh_short[1] * z + cosh_short[0]) * z;
  if (kGrade == kA53 && kFunction == kSinh)
    q = ((sinh_long[2] * z + sinh_long[1]) * z + sinh_long[0]) * z * r + r;
  else
    q = (sinh_short[1] * z + sinh_short[0]) * z * r + r;
  long double rest = leading * p + other * q;
  if (kGrade == kA53 && kFunction == kSinh) rest += cell.sinh_low;
  return leading + rest;
}

// The same of a cell to 53 bits, in assembly: every operand that stands in memory is taken from there,
// since copies on the stack and exchanges cost the unit more. SERIES: the sum times z, of z in st(1).
// clang-format off
#define SERIES_2(table, times_z)                                                     \
  "fldl 8(" table ")\n\tfmul %%st(1), %%st\n\tfaddl (" table ")\n\t" times_z "\n\t"
#define SERIES_3(table, times_z)                                                     \
  "fldl 16(" table ")\n\tfmul %%st(1), %%st\n\tfaddl 8(" table ")\n\t"               \
  "fmul %%st(1), %%st\n\tfaddl (" table ")\n\t" times_z "\n\t"
#define PUT_VALUE(sinh_series, sinh_terms, leading, other, add_low)                  \
  asm("fldl %[r]\n\tfmull %[r]\n\t"                                                 \
      SERIES_3("%[cosh]", "fmul %%st(1), %%st")                                      \
      "fmull %c[" #leading "](%[cell])\n\tfxch\n\t"                                 \
      sinh_series("%[sinh]", "fmulp %%st, %%st(1)")                                  \
      "fmull %[r]\n\tfaddl %[r]\n\tfmull %c[" #other "](%[cell])\n\t"                \
      "faddp %%st, %%st(1)\n\t" add_low "faddl %c[" #leading "](%[cell])\n\t"         \
      "fstpl %[y]"                                                                   \
      : [y] "=m"(in_memory(y))                                                       \
      : [r] "m"(r), [cell] "r"(&cell), "m"(cell), [cosh] "r"(kCoshLong),             \
        [sinh] "r"(sinh_terms), [C] "i"(offsetof(DoubleCell, cosh)),                 \
        [S] "i"(offsetof(DoubleCell, sinh)),                                         \
        [low] "i"(offsetof(DoubleCell, sinh_low))                                    \
      : "st", "st(1)", "st(2)")
// clang-format on

template <Function kFunction>
static inline void put_value(double* y, const DoubleCell& cell, const double& r) {
  if constexpr (kFunction == kCosh)
    PUT_VALUE(SERIES_2, kSinhShort, C, S, "");
  else
    PUT_VALUE(SERIES_3, kSinhLong, S, C, "fadds %c[low](%[cell])\n\t");
}

// |x| below 23. The rests are doubles, exactly; in two passes the elements overlap better.
template <Function kFunction, Grade kGrade, int kCount>
static inline void table_block(const double* x, double* y) {
  double r[kCount];
  uint32_t sign[kCount], j[kCount];
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    sign[lane] = upper_word(x + lane) & kSignUpper;
    const long double a = magnitude_of(x + lane);
    j[lane] = nearest_cell(a);
    put(r + lane, a - kDoubleCell[j[lane]].x);
  }
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const DoubleCell& cell = kDoubleCell[j[lane]];
    if constexpr (kGrade == kA53)
      put_value<kFunction>(y + lane, cell, r[lane]);
    else
      put(y + lane, value<kFunction, kGrade>(cell, load_extended(r + lane)));
    if (kFunction == kSinh) set_upper_bits(y + lane, sign[lane]);
  }
}

// A cosine's r is stored for normal |x| only: a subnormal one may trap, and 1 is the result.
template <Function kFunction, int kCount>
static inline bool all_in_table(const double* x) {
  if (kFunction == kSinh) return all_below<kCount>(x, kTableEnd);
  return none_outside<kCount>([=](int lane) {
    return outside(upper_magnitude(x + lane), Upper<double>::kSmallestNormal, kTableEnd);
  });
}

// Any |x| below the bound of overflow.
template <Function kFunction, Grade kGrade>
static inline void wide_element(const double* x, double* y) {
  // Of the upper ln 2 of the table, so that m is 0 below 23.
  constexpr float kMiddle = 0x1.6a748p+4f;  // 22.65344
  const uint32_t sign = upper_word(x) & kSignUpper;
  const long double a = magnitude_of(x);
  const int32_t nearest = nearest_integer((a - kMiddle) * kLog2E), m = nearest > 0 ? nearest : 0;
  const long double shifted = a - m * (long double)kLn2High;
  const DoubleCell& cell = kDoubleCell[nearest_cell(shifted)];
  put(y, value<kFunction, kGrade>(cell, (shifted - cell.x) - m * (long double)kLn2Low));
  add_to_upper_word(y, uint32_t(m) << 20);
  if (kFunction == kSinh) set_upper_bits(y, sign);
}

template <Function kFunction, Grade kGrade>
static inline Status hyperbolic(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        for (; i < last; i += 4) {
          if (all_in_table<kFunction, 4>(src + i)) {
            table_block<kFunction, kGrade, 4>(src + i, dst + i);
          } else if (all_below<4>(src + i, kWideEnd)) {
            for (int lane = 0; lane < 4; ++lane)
              wide_element<kFunction, kGrade>(src + i + lane, dst + i + lane);
          } else {
            break;
          }
        }
        return i;
      },
      [&](int32_t i, Status* status) {
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (all_in_table<kFunction, 1>(src + i)) {
          table_block<kFunction, kGrade, 1>(src + i, dst + i);
        } else if (a < kOverflow) {
          wide_element<kFunction, kGrade>(src + i, dst + i);
        } else if (a > Format<double>::kInf) {
          store_bits(dst + i, quieted<double>(x));
        } else {
          store_bits(dst + i, Format<double>::kInf | (kFunction == kSinh ? x ^ a : 0));
          if (a != Format<double>::kInf) _ErrorCall(arrays, LUX_OVERFLOW, i, status);
        }
      });
}

#endif
