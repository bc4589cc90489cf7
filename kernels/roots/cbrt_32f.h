// SPDX-License-Identifier: MIT
//
// What the cube root and the reciprocal cube root of single-precision arrays share: the screening
// of four elements, and x^d, d = +-1/3, on the x87 unit at 53-bit precision:
//
//   |x| = m 2^(E - 127), 1 <= m < 2,  j = the top fraction bits,
//   +-|x|^d = +-((c2[j] m + c1[j]) m + c0[j]) 2^((E - 127) d), rounded once.
//
// The power of two with the sign comes from one table. They differ in their tables, also in how
// many quadratics these have, and in that the reciprocal cube root keeps the results before rounding.
#ifndef LUX_KERNELS_ROOTS_CBRT_32F_H
#define LUX_KERNELS_ROOTS_CBRT_32F_H

#include "kernels/frame.h"
#include "kernels/lanes.h"

// Compares powers of two, zero and infinity only: that raises no flag and depends on no setting.
static inline bool all_normal(__m128 x) {
  const __m128 exponents = _mm_and_ps(x, all_lanes(Format<float>::kInf));
  const __m128 special = _mm_or_ps(_mm_cmpeq_ps(exponents, _mm_setzero_ps()),
                                   _mm_cmpeq_ps(exponents, all_lanes(Format<float>::kInf)));
  return !in_any_lane(special);
}

template <class Table>
constexpr uint32_t kQuadratics = sizeof(Table::c0) / sizeof(double);

// Assembly. Operands: src, dst, the block; m, the significands; table; upper and j to work with;
// shift and index, for the number of the quadratic; c2, c1, c0 and factor, offsets in the table; y,
// where results are kept as doubles.
#define CBRT_ELEMENT(lane, keep)    \
  "movl 4*" #lane                   \
  "(%[src]), %[upper]\n\t"          \
  "flds 4*" #lane                   \
  "+%[m]\n\t"                       \
  "movl %[upper], %[j]\n\t"         \
  "shrl %[shift], %[j]\n\t"         \
  "andl %[index], %[j]\n\t"         \
  "fldl %c[c2](%[table],%[j])\n\t"  \
  "fmul %%st(1), %%st\n\t"          \
  "shrl $23, %[upper]\n\t"          \
  "faddl %c[c1](%[table],%[j])\n\t" \
  "fmulp %%st, %%st(1)\n\t"         \
  "faddl %c[c0](%[table],%[j])\n\t" \
  "fmull %c[factor](%[table],%[upper],8)\n\t" keep(lane) "fstps 4*" #lane "(%[dst])\n\t"

#define CBRT_DROP(lane)
#define CBRT_KEEP(lane) "fstl 8*" #lane "+%[y]\n\t"

#define CBRT_LANES(elements)                                                                 \
  asm volatile(elements                                                                      \
               : [upper] "=&r"(upper), [j] "=&r"(j), [y] "=o"(y)                             \
               : [m] "o"(m), [src] "r"(src), [dst] "r"(dst), [table] "r"(&table),            \
                 [shift] "i"(20 - __builtin_popcount(kIndex)), [index] "i"(kIndex * 8),      \
                 [c2] "i"(offsetof(Table, c2)), [c1] "i"(offsetof(Table, c1)),               \
                 [c0] "i"(offsetof(Table, c0)), [factor] "i"(offsetof(Table, scaled_factor)) \
               : "cc", LUX_X87_STACK)

// Four normal numbers, x.
template <bool kKeep, class Table>
static inline void cbrt_block(const Table& table, const float* src, __m128 x, double (&y)[4],
                              float* dst) {
  constexpr uint32_t kIndex = kQuadratics<Table> - 1;
  alignas(16) float m[4];
  uint32_t upper, j;
  _mm_store_ps(m, significand_of(x));
  if constexpr (kKeep)
    CBRT_LANES(CBRT_ELEMENT(0, CBRT_KEEP) CBRT_ELEMENT(1, CBRT_KEEP) CBRT_ELEMENT(2, CBRT_KEEP)
                   CBRT_ELEMENT(3, CBRT_KEEP));
  else
    CBRT_LANES(CBRT_ELEMENT(0, CBRT_DROP) CBRT_ELEMENT(1, CBRT_DROP) CBRT_ELEMENT(2, CBRT_DROP)
                   CBRT_ELEMENT(3, CBRT_DROP));
}

// One normal number.
template <class Table>
static inline void cbrt_element(const Table& table, const float* src, double (&y)[1], float* dst) {
  constexpr uint32_t kIndex = kQuadratics<Table> - 1;
  float m;
  uint32_t upper, j;
  store_bits(&m, (load_bits(src) & Format<float>::kFraction) | Format<float>::kOne);
  CBRT_LANES(CBRT_ELEMENT(0, CBRT_KEEP));
}

#endif
