// SPDX-License-Identifier: MIT
//
// What the cube root and the reciprocal cube root of double-precision arrays share; they differ in
// parts of their table. x^d, d = +-1/3, on the x87 unit at 64-bit precision:
//
//   |x| = z 2^(E - 1023), 1 <= z < 2, j the upper eight fraction bits of z, f the other 44,
//   t = f / (1 + j/256) by a tabulated reciprocal, 0 <= t < 2^-8,
//   |x|^d = (1 + t p(t)) h 2^(q - 341), p of fourth degree,
//   3 q + r = E for the root and 2047 - E for the reciprocal root, 0 <= r < 3,
//   h = (1 + j/256)^d 2^(r/3), the reciprocal's by 2^((r - 1)/3), as a double and a single.
//
// The double is added last, so that three errors count: that of p, at most 2^-61.9 (proven in the
// tables), that of t, 2^-62.6 of the result, and one rounding to 64 bits. Together they are below
// 0.004 ulp, before the rounding to a double. No result leaves the normal numbers: q - 341 is added
// to the exponent of the stored double.
//
//   normal x      pairs; when one of two does not belong here, both go one by one
//   subnormal x   the same for 2^54 x, times 2^(-54 d)
#ifndef LUX_KERNELS_ROOTS_CBRT_64F_H
#define LUX_KERNELS_ROOTS_CBRT_64F_H

#include "kernels/frame.h"
#include "kernels/lanes.h"
#include "kernels/roots/generated/cbrt_64f_table.h"  // kCubeRoots

constexpr uint32_t kThird = 21846;  // 2^16/3: the product's bits 15 and 14 tell the remainder
constexpr uint32_t kBias = 341u << 20;
alignas(16) static const uint64_t kLowFraction[2] = {0x00000FFFFFFFFFFF, 0x00000FFFFFFFFFFF};

// Assembly. Operands: src, dst and the index i of the pair; f and thirds, the fractions and the
// products of the exponents; table; k and j to work with; and the constants below; smallest and
// normals, bounds of the screening.
#define CBRT_ELEMENT(lane)                    \
  "movl 4+8*" #lane                           \
  "(%[src],%[i],8), %[k]\n\t"                 \
  "movl %[k], %[j]\n\t"                       \
  "shrl $20, %[k]\n\t"                        \
  "shrl $12, %[j]\n\t"                        \
  "andl $0x7FF, %[k]\n\t"                     \
  "andl $0xFF, %[j]\n\t"                      \
  "xorl %[flip], %[k]\n\t"                    \
  "imull %[third], %[k], %[k]\n\t"            \
  "fildll 8*" #lane                           \
  "+%[f]\n\t"                                 \
  "fmull %c[reciprocal](%[table],%[j],8)\n\t" \
  "movl %[k], 4*" #lane                       \
  "+%[thirds]\n\t"                            \
  "shrl $6, %[k]\n\t"                         \
  "andl $0x300, %[k]\n\t"                     \
  "orl %[k], %[j]\n\t"                        \
  "fldl %c[p](%[table])\n\t"                  \
  "fmul %%st(1), %%st\n\t"                    \
  "faddl %c[p]+8(%[table])\n\t"               \
  "fmul %%st(1), %%st\n\t"                    \
  "faddl %c[p]+16(%[table])\n\t"              \
  "fmul %%st(1), %%st\n\t"                    \
  "faddl %c[p]+24(%[table])\n\t"              \
  "fmul %%st(1), %%st\n\t"                    \
  "faddl %c[p]+32(%[table])\n\t"              \
  "fmulp %%st, %%st(1)\n\t"                   \
  "fmull %c[high](%[table],%[j],8)\n\t"       \
  "fadds %c[low](%[table],%[j],4)\n\t"        \
  "faddl %c[high](%[table],%[j],8)\n\t"       \
  "movl 4*" #lane                             \
  "+%[thirds], %[k]\n\t"                      \
  "movl 4+8*" #lane                           \
  "(%[src],%[i],8), %[j]\n\t"                 \
  "shll $4, %[k]\n\t"                         \
  "andl %[sign], %[j]\n\t"                    \
  "andl $0xFFF00000, %[k]\n\t"                \
  "leal %c[bias](%[k],%[j]), %[k]\n\t"        \
  "fstpl 8*" #lane                            \
  "(%[dst],%[i],8)\n\t"                       \
  "addl %[k], 4+8*" #lane "(%[dst],%[i],8)\n\t"

// What turns an exponent field into that of the reciprocal, the factor of exponents, the power's
// bias, the sign, and offsets in the table.
#define CBRT_CONSTANTS                                                                \
  [flip] "i"(kInverse ? 0x7FF : 0), [third] "i"(kThird), [bias] "i"(-int32_t(kBias)), \
      [sign] "i"(kSignUpper), [p] "i"(offsetof(CubeRootTable, p[kInverse])),          \
      [reciprocal] "i"(offsetof(CubeRootTable, reciprocal)),                          \
      [high] "i"(offsetof(CubeRootTable, high[kInverse])),                            \
      [low] "i"(offsetof(CubeRootTable, low[kInverse]))

#define CBRT_SCREEN(lane)      \
  "movl 4+8*" #lane            \
  "(%[src],%[i],8), %[k]\n\t"  \
  "andl $0x7FFFFFFF, %[k]\n\t" \
  "subl %[smallest], %[k]\n\t" \
  "cmpl %[normals], %[k]\n\t"  \
  "jae 3f\n\t"

// Six registers are all there are, so no instrumentation fits beside this. The fractions are cut
// out of both elements at once: a double that is stored in halves cannot be loaded without a stall.
template <bool kInverse>
__attribute__((no_sanitize("address", "undefined"))) static inline int32_t cbrt_pairs(
    const double* src, double* dst, int32_t i, int32_t last) {
  alignas(16) uint64_t f[2];
  uint32_t thirds[2];
  uint32_t k, j;
  asm volatile(
      "movaps (%[low_fraction]), %%xmm1\n\t"
      "jmp 2f\n"
      "1:\n\t"  //
      CBRT_SCREEN(0) CBRT_SCREEN(1)
      "movups (%[src],%[i],8), %%xmm0\n\t"
      "andps %%xmm1, %%xmm0\n\t"
      "movaps %%xmm0, %[f]\n\t"  //
      CBRT_ELEMENT(0) CBRT_ELEMENT(1)
      "addl $2, %[i]\n"
      "2:\n\t"
      "cmpl %[last], %[i]\n\t"
      "jl 1b\n"
      "3:\n\t"
      : [i] "+r"(i), [f] "=o"(f), [thirds] "=o"(thirds), [k] "=&r"(k), [j] "=&r"(j)
      : [src] "r"(src), [dst] "r"(dst), [last] "m"(last), [table] "r"(&kCubeRoots),
        [low_fraction] "[k]"(kLowFraction), [smallest] "i"(Upper<double>::kSmallestNormal),
        [normals] "i"(Upper<double>::kInf - Upper<double>::kSmallestNormal), CBRT_CONSTANTS
      : "cc", "xmm0", "xmm1", LUX_X87_STACK);
  return i;
}

// One normal element.
template <bool kInverse>
__attribute__((no_sanitize("address", "undefined"), noinline)) static void cbrt_element(
    const double* src, double* dst) {
  uint64_t f;
  uint32_t thirds, k, j;
  store_half(&f, _mm_and_ps(load_half(src), load_half(kLowFraction)));
  asm volatile(CBRT_ELEMENT(0)
               : [thirds] "=m"(thirds), [k] "=&r"(k), [j] "=&r"(j)
               : [src] "r"(src), [dst] "r"(dst), [i] "r"(0), [f] "m"(f), [table] "r"(&kCubeRoots),
                 CBRT_CONSTANTS
               : "cc", LUX_X87_STACK);
}

template <bool kInverse>
static inline void cbrt_subnormal(const double* src, double* dst) {
  double scaled;
  put(&scaled, load_extended(src) * 0x1p54f);  // exact
  cbrt_element<kInverse>(&scaled, dst);
  add_to_upper_word(dst, uint32_t(kInverse ? 18 : -18) << 20);
}

// Zeros, infinities and NaNs are `other`'s.
template <bool kInverse, class Other>
static inline Status cbrt_64f(const Arrays<double>& arrays, int32_t len, Other other) {
  const double* const src = arrays.src1;
  double* const dst = arrays.dst1;
  return run_kernel<X87Nearest<X87_EXTENDED>, 2>(
      arrays, len, [&](int32_t i, int32_t last) { return cbrt_pairs<kInverse>(src, dst, i, last); },
      [&](int32_t i, Status* status) {
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (a >= Format<double>::kInf || a == 0)
          other(i, x, status);
        else if (a < Format<double>::kSmallestNormal)
          cbrt_subnormal<kInverse>(src + i, dst + i);
        else
          cbrt_element<kInverse>(src + i, dst + i);
      });
}

#endif
