// SPDX-License-Identifier: MIT
//
// Cube root of single-precision arrays, on the x87 unit at 53-bit precision.
//
//   |x| = m 2^(E - 127), 1 <= m < 2,  j = the top six fraction bits,
//   cbrt(x) = +-((c2[j] m + c1[j]) m + c0[j]) 2^((E - 127)/3), rounded once.
//
//   normal x      blocks of four; the power of two with the sign comes from one table
//   subnormal x   y = 1e39 x in its place; the power is put together, its factor undoes the 1e39
//
// Worst error 0.6063 ulp, at 0x00576F7B, of normal arguments 0.5962 ulp, at 0x40807F8D (all
// inputs).
#include <xmmintrin.h>

#include "kernels/arith/cbrt_32f_table.h"  // static_const_table
#include "kernels/arith/frame.h"

constexpr uint32_t kExponent = 0x7F800000;
constexpr uint32_t kFraction = 0x007FFFFF;
constexpr uint32_t kOne = 0x3F800000;

static inline __m128 four(uint32_t pattern) {
  float value;
  store_bits(&value, pattern);
  return _mm_set1_ps(value);
}

// Compares powers of two, zero and infinity only: that raises no flag and depends on no setting.
static inline bool all_normal(__m128 x) {
  const __m128 exponents = _mm_and_ps(x, four(kExponent));
  const __m128 special = _mm_or_ps(_mm_cmpeq_ps(exponents, _mm_setzero_ps()),
                                   _mm_cmpeq_ps(exponents, four(kExponent)));
  return !_mm_movemask_ps(special);
}

static inline __m128 significands(__m128 x) {
  return _mm_or_ps(_mm_and_ps(x, four(kFraction)), four(kOne));
}

#define CBRT_ELEMENT(lane)                    \
  "movl 4*" #lane                             \
  "(%[src]), %[upper]\n\t"                    \
  "flds 4*" #lane                             \
  "+%[m]\n\t"                                 \
  "movl %[upper], %[j]\n\t"                   \
  "shrl $14, %[j]\n\t"                        \
  "andl $0x1F8, %[j]\n\t"                     \
  "fldl %c[c2](%[table],%[j])\n\t"            \
  "fmul %%st(1), %%st\n\t"                    \
  "shrl $23, %[upper]\n\t"                    \
  "faddl %c[c1](%[table],%[j])\n\t"           \
  "fmulp %%st, %%st(1)\n\t"                   \
  "faddl %c[c0](%[table],%[j])\n\t"           \
  "fmull %c[factor](%[table],%[upper],8)\n\t" \
  "fstps 4*" #lane "(%[dst])\n\t"

static inline void cbrt_block(const float* src, __m128 x, float* dst) {
  alignas(16) float m[4];
  uint32_t upper, j;
  using Table = decltype(static_const_table);
  _mm_store_ps(m, significands(x));
  asm volatile(CBRT_ELEMENT(0) CBRT_ELEMENT(1) CBRT_ELEMENT(2) CBRT_ELEMENT(3)
               : [upper] "=&r"(upper), [j] "=&r"(j)
               : [m] "o"(m), [src] "r"(src), [dst] "r"(dst), [table] "r"(&static_const_table),
                 [c2] "i"(offsetof(Table, c2)), [c1] "i"(offsetof(Table, c1)),
                 [c0] "i"(offsetof(Table, c0)), [factor] "i"(offsetof(Table, scaled_factor))
               : "cc", LUX_X87_STACK);
}

// The interval comes from a single's pattern.
static inline double quadratic(uint32_t x, double m) {
  const auto& table = static_const_table;
  const uint32_t j = x >> 17 & 63;
  return (table.c2[j] * m + table.c1[j]) * m + table.c0[j];
}

static inline float cbrt_normal(uint32_t x) {
  float m;
  store_bits(&m, (x & kFraction) | kOne);
  return store_f32(float(quadratic(x, m) * static_const_table.scaled_factor[x >> 23]));
}

// The significand is that of y, everything else comes from y rounded to a single. The biased
// exponent times 64 kThird is a third of it in units of 2^-23: the quotient stands in the exponent
// field, and bits 20 and 19 tell the remainder, 00, 01 or 10.
__attribute__((noinline, cold)) static float cbrt_subnormal(float x) {
  constexpr uint32_t kThird = 43691;     // (2^17 + 1) / 3
  constexpr uint32_t kBias = 710934528;  // 84.75 2^23
  const double y = store_f64(x * 1e39);
  const float rounded = store_f32(float(y));
  const uint32_t u = load_bits(&rounded), third = ((u & kExponent) >> 16) * kThird >> 1;
  const Words words = load_words(&y);
  double m;
  store_words(&m, {words.lower, (words.upper & 0x000FFFFF) | 0x3FF00000});
  float scale;
  store_bits(&scale, (u & Format<float>::kSign) | ((third + kBias) & kExponent));
  return store_f32(
      float(quadratic(u, m) * static_const_table.subnormal_factor[third >> 19 & 3] * scale));
}

static Status cbrt_32f(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, 4>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        for (; i < last; i += 4) {
          const __m128 x = _mm_loadu_ps(src + i);
          if (!all_normal(x)) break;
          cbrt_block(src + i, x, dst + i);
        }
        return i;
      },
      [=](int32_t i, Status*) {
        const uint32_t x = load_bits(src + i), a = magnitude<float>(x);
        if (a >= kExponent || a == 0)
          store_bits(dst + i, quieted<float>(x));
        else if (a <= kFraction)
          dst[i] = cbrt_subnormal(src[i]);
        else
          dst[i] = cbrt_normal(x);
      });
}

LUX_KERNELS_32F(Cbrt, 1_1, cbrt_32f)
