// SPDX-License-Identifier: MIT
//
// Hyperbolic tangent of single-precision arrays, on the x87 unit at 53-bit precision.
//
//   |x| <= 2^-126          x
//   |x| <  0.001           odd Taylor series to x^7; what it leaves out is below 3e-26 of x
//   0.001 <= |x| < 10      j = round(16 |x|) from the low bits of |x| + 2^19 as a single,
//                          r = |x| - j/16 exactly, |r| <= 1/32,
//                          tanh |x| = (r B + T A) / (T r B + A),  T = tanh(j/16),
//                          A = c0 + c2 r^2 for cosh r,  B = s0 + s2 r^2 for sinh(r)/r
//   otherwise              +-1
//
// Blocks of four from 0.001 on: the step gives 1 for the last single below 10, so larger arguments
// take its place in a block.
//
// Worst error 0.7612 ulp, at 0x3AFDB0D6 (all inputs).
#include "kernels/frame.h"
#include "kernels/hyper/generated/tanh_32f_table.h"  // static_const_table
#include "kernels/screens.h"

constexpr uint32_t kSeries = 0x3A83126F;   // 0.001
constexpr uint32_t kOneFrom = 0x41200000;  // 10.0
constexpr uint32_t kInf = Format<float>::kInf;

// False when an element is too small or a NaN.
static inline bool load_magnitudes(const float* x, float* magnitudes) {
  return none_outside<4>([=](int lane) {
    const uint32_t a = upper_magnitude(x + lane);
    store_bits(magnitudes + lane, a < kOneFrom ? a : kOneFrom - 1);
    return outside(a, kSeries, kInf + 1);
  });
}

// Assembly. Operands: src, dst, the block; a, the magnitudes; v and y, singles of each element;
// table; j to work with; shifter, s2, c2, s0 and c0, offsets in the table.
#define TANH_ELEMENT(lane)                   \
  "flds 4*" #lane                            \
  "+%[a]\n\t"                                \
  "fadds %c[shifter](%[table])\n\t"          \
  "fsts 4*" #lane                            \
  "+%[v]\n\t"                                \
  "fsubs 4*" #lane                           \
  "+%[v]\n\t" /* r */                        \
  "movzbl 4*" #lane                          \
  "+%[v], %[j]\n\t"                          \
  "fld %%st\n\t"                             \
  "fmul %%st(1), %%st\n\t" /* r^2, r */      \
  "fldl %c[c2](%[table])\n\t"                \
  "fmul %%st(1), %%st\n\t"                   \
  "fxch %%st(1)\n\t"                         \
  "fmull %c[s2](%[table])\n\t"               \
  "fxch %%st(1)\n\t"                         \
  "faddl %c[c0](%[table])\n\t"               \
  "fxch %%st(1)\n\t"                         \
  "faddl %c[s0](%[table])\n\t" /* B, A, r */ \
  "fmulp %%st, %%st(2)\n\t"    /* A, r B */  \
  "fldl (%[table],%[j],8)\n\t"               \
  "fmul %%st(1), %%st\n\t"                   \
  "fadd %%st(2), %%st\n\t"                   \
  "fxch %%st(2)\n\t" /* r B, A, above */     \
  "fmull (%[table],%[j],8)\n\t"              \
  "faddp %%st, %%st(1)\n\t"                  \
  "fdivrp %%st, %%st(1)\n\t"                 \
  "movl 4*" #lane                            \
  "(%[src]), %[j]\n\t"                       \
  "andl $0x80000000, %[j]\n\t"               \
  "fstps 4*" #lane                           \
  "+%[y]\n\t"                                \
  "orl 4*" #lane                             \
  "+%[y], %[j]\n\t"                          \
  "movl %[j], 4*" #lane "(%[dst])\n\t"

#define TANH_LANES(elements)                                                                     \
  {                                                                                              \
    using Table = decltype(static_const_table);                                                  \
    uint32_t j;                                                                                  \
    asm volatile(elements                                                                        \
                 : [v] "=o"(v), [y] "=o"(y), [j] "=&r"(j)                                        \
                 : [a] "o"(a), [src] "r"(src), [dst] "r"(dst), [table] "r"(&static_const_table), \
                   [shifter] "i"(offsetof(Table, shifter)), [s2] "i"(offsetof(Table, s2)),       \
                   [c2] "i"(offsetof(Table, c2)), [s0] "i"(offsetof(Table, s0)),                 \
                   [c0] "i"(offsetof(Table, c0))                                                 \
                 : "cc", LUX_X87_STACK);                                                         \
  }

// False, and nothing stored, when an element is too small or a NaN.
static inline bool tanh_block(const float* src, float* dst) {
  float a[4], v[4], y[4];
  if (!load_magnitudes(src, a)) return false;
  TANH_LANES(TANH_ELEMENT(0) TANH_ELEMENT(1) TANH_ELEMENT(2) TANH_ELEMENT(3))
  return true;
}

// 0.001 <= |x| < 10
static void table_range(const float* src, float* dst) {
  float a, v, y;
  store_bits(&a, upper_magnitude(src));
  TANH_LANES(TANH_ELEMENT(0))
}

static float series(double x) {
  const auto& table = static_const_table;
  const double square = x * x;
  const double p = (table.p5 * square + table.p3) * square + table.p1;
  return store_f32(float(x + square * x * p));
}

static Status tanh_32f(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, 4>(
      arrays, len,
      with_wide_step<Unit::kX87, &WideLibrary::Tanh_32f_A24>(arrays, len,
                                                             [=](int32_t i, int32_t last) {
                                                               while (i < last &&
                                                                      tanh_block(src + i, dst + i))
                                                                 i += 4;
                                                               return i;
                                                             }),
      [=](int32_t i, Status*) {
        const uint32_t x = load_bits(src + i), a = magnitude<float>(x), sign = x ^ a;
        if (a <= Format<float>::kSmallestNormal || a > kInf) {
          store_bits(dst + i, quieted<float>(x));
        } else if (a < kSeries) {
          in_memory(dst + i) = series(in_memory(src + i));
        } else if (a >= kOneFrom) {
          store_bits(dst + i, sign | Format<float>::kOne);
        } else {
          table_range(src + i, dst + i);
        }
      });
}

LUX_KERNELS_32F(Tanh, 1_1, tanh_32f)
