// SPDX-License-Identifier: MIT
//
// Sine and cosine at once of double-precision arrays, on the x87 unit at 64-bit precision.
//
//   n = x 128/pi to nearest,  r = x - n P1 - n P2 - n P3,  |r| <= pi/256
//   s = sin r = r (1 + r^2 poly),  h = 1 - cos r = r^2 poly
//   sin x = S - (S h - C s),  cos x = C - (C h + S s),  S and C of n pi/128 from a table
//
// n P1, what it leaves of x, and n P2 are exact for |x| < 128000. A53 takes S and C to extended
// precision and polynomials to r^7 and r^6, A50 takes doubles, and stops at r^5 and r^4.
//
// Worst error found: A53 0.5008 ulp at 0xC012CCB703B86DF4, A50 3.051 ulp at 0x3FF95B9EF68F07F8
// (sampled against 160 bits).
#include "kernels/trig/blocks_64f.h"
#include "core/generated/sines_table.h"  // kSines

// From r on top of the stack; word becomes the offset of the table's entry.
#define SQUARE(n)          \
  "movl " n                \
  ", %[word]\n\t"          \
  "andl $255, %[word]\n\t" \
  "shll $4, %[word]\n\t"   \
  "fld %%st\n\t"           \
  "fmul %%st, %%st\n\t" /* r^2, r */

// st: h, s
#define POLYNOMIALS_A53                        \
  "fldl %c[s53]+16(%[table])\n\t"              \
  "fmul %%st(1), %%st\n\t"                     \
  "fldl %c[c53]+16(%[table])\n\t"              \
  "fmul %%st(2), %%st\n\t"                     \
  "faddl %c[c53]+8(%[table])\n\t"              \
  "fxch\n\t"                                   \
  "faddl %c[s53]+8(%[table])\n\t"              \
  "fmul %%st(2), %%st\n\t"                     \
  "fxch\n\t"                                   \
  "fmul %%st(2), %%st\n\t"                     \
  "faddl %c[c53](%[table])\n\t"                \
  "fxch\n\t"                                   \
  "faddl %c[s53](%[table])\n\t"                \
  "fmul %%st(2), %%st\n\t"                     \
  "fxch %%st(2)\n\t"                           \
  "fmulp %%st, %%st(1)\n\t" /* h, s poly, r */ \
  "fxch\n\t"                                   \
  "fadds %c[one](%[table])\n\t"                \
  "fmulp %%st, %%st(2)\n\t"

#define POLYNOMIALS_A50          \
  "fldl %c[s50]+8(%[table])\n\t" \
  "fmul %%st(1), %%st\n\t"       \
  "fldl %c[c50]+8(%[table])\n\t" \
  "fmul %%st(2), %%st\n\t"       \
  "faddl %c[c50](%[table])\n\t"  \
  "fxch\n\t"                     \
  "faddl %c[s50](%[table])\n\t"  \
  "fmul %%st(2), %%st\n\t"       \
  "fxch %%st(2)\n\t"             \
  "fmulp %%st, %%st(1)\n\t"      \
  "fxch\n\t"                     \
  "fadds %c[one](%[table])\n\t"  \
  "fmulp %%st, %%st(2)\n\t"

#define JOIN_A53(y1, y2)                                 \
  "fldl %c[sine](%[table],%[word])\n\t"                  \
  "faddl %c[sine]+8(%[table],%[word])\n\t"               \
  "fldl %c[cosine](%[table],%[word])\n\t"                \
  "faddl %c[cosine]+8(%[table],%[word])\n\t"             \
  "fld %%st(1)\n\t"                                      \
  "fmul %%st(3), %%st\n\t"                               \
  "fld %%st(1)\n\t"                                      \
  "fmul %%st(5), %%st\n\t"                               \
  "fsubrp %%st, %%st(1)\n\t" /* S h - C s, C, S, h, s */ \
  "fsubr %%st(2), %%st\n\t"                              \
  "fstpl " y1                                            \
  "\n\t"                                                 \
  "fxch %%st(2)\n\t"                                     \
  "fmul %%st(2), %%st\n\t"                               \
  "fxch\n\t"                                             \
  "fmulp %%st, %%st(3)\n\t" /* C h, C, S s */            \
  "faddp %%st, %%st(2)\n\t"                              \
  "fsubp %%st, %%st(1)\n\t"                              \
  "fstpl " y2 "\n\t"

#define JOIN_A50(y1, y2)                           \
  "fldl %c[sine](%[table],%[word])\n\t"            \
  "fmul %%st(1), %%st\n\t"                         \
  "fldl %c[cosine](%[table],%[word])\n\t"          \
  "fmul %%st(3), %%st\n\t"                         \
  "fsubrp %%st, %%st(1)\n\t" /* S h - C s, h, s */ \
  "fsubrl %c[sine](%[table],%[word])\n\t"          \
  "fstpl " y1                                      \
  "\n\t"                                           \
  "fmull %c[cosine](%[table],%[word])\n\t"         \
  "fxch\n\t"                                       \
  "fmull %c[sine](%[table],%[word])\n\t"           \
  "faddp %%st, %%st(1)\n\t"                        \
  "fsubrl %c[cosine](%[table],%[word])\n\t"        \
  "fstpl " y2 "\n\t"

// The element whose r is on top of the stack. Below it may stand that of the next one.
#define ELEMENT(at, n, grade) \
  SQUARE(n) POLYNOMIALS_##grade JOIN_##grade(#at "(%[src],%[dst1])", #at "(%[src],%[dst2])")

#define BLOCKS(grade) \
  "jmp 2f\n"                             \
  "1:\n\t"                              \
  LUX_STEPS("(%[src])", "%[n0]", "")    \
  LUX_STEPS("8(%[src])", "%[n1]", "")   \
  LUX_STEPS("16(%[src])", "%[n2]", "")  \
  LUX_STEPS("24(%[src])", "%[n3]", "")  \
  LUX_REDUCE("(%[src])", "%[n0]", "")   \
  LUX_REDUCE("8(%[src])", "%[n1]", "")  \
  "fxch\n\t"                            \
  ELEMENT(0, "%[n0]", grade)            \
  LUX_REDUCE("16(%[src])", "%[n2]", "") \
  "fxch\n\t"                            \
  ELEMENT(8, "%[n1]", grade)            \
  LUX_REDUCE("24(%[src])", "%[n3]", "") \
  "fxch\n\t"                            \
  ELEMENT(16, "%[n2]", grade)           \
  ELEMENT(24, "%[n3]", grade)           \
  "addl $32, %[src]\n"                  \
  "2:\n\t"                              \
  LUX_SCREEN_BLOCK

#define ONE_ELEMENT(grade)            \
  LUX_STEPS("(%[src])", "%[n0]", "")  \
  LUX_REDUCE("(%[src])", "%[n0]", "") \
  ELEMENT(0, "%[n0]", grade)

// Operands: src, and dst1 and dst2 as the distances from it; n, integers of four elements; table;
// word and count to work with; end and bound of the screening; the others, offsets in the table.
#define ASSEMBLY(instructions)                                                               \
  {                                                                                          \
    using Table = SineTable;                                                                 \
    int32_t n[4];                                                                            \
    uint32_t word, count;                                                                    \
    asm volatile(instructions                                                                \
                 : [src] "+r"(at), [n0] "=m"(n[0]), [n1] "=m"(n[1]), [n2] "=m"(n[2]),        \
                   [n3] "=m"(n[3]), [word] "=&r"(word), [count] "=&r"(count)                 \
                 : [dst1] "r"(distance(src, dst1)), [dst2] "r"(distance(src, dst2)),         \
                   [end] "m"(end), [table] "r"(&kSines), [bound] "i"(kScreenBound),          \
                   [inv_step] "i"(offsetof(Table, inv_step)), [p1] "i"(offsetof(Table, p1)), \
                   [p2] "i"(offsetof(Table, p2)), [p3] "i"(offsetof(Table, p3)),             \
                   [s53] "i"(offsetof(Table, s53)), [c53] "i"(offsetof(Table, c53)),         \
                   [s50] "i"(offsetof(Table, s50)), [c50] "i"(offsetof(Table, c50)),         \
                   [one] "i"(offsetof(Table, one)), [sine] "i"(offsetof(Table, sine)),       \
                   [cosine] "i"(offsetof(Table, sine[64]))                                   \
                 : "cc", LUX_X87_STACK);                                                     \
  }

struct A53 {};
struct A50 {};

// Six registers are all there are, so no instrumentation fits beside this.
template <class Grade>
__attribute__((no_sanitize("address", "undefined"))) static int32_t sincos_blocks(
    const double* src, double* dst1, double* dst2, int32_t i, int32_t last) {
  const double* at = src + i;
  const double* const end = src + last;
  if constexpr (__is_same(Grade, A53))
    ASSEMBLY(BLOCKS(A53))
  else
    ASSEMBLY(BLOCKS(A50))
  return int32_t(at - src);
}

template <class Grade>
__attribute__((no_sanitize("address", "undefined"), noinline)) static void sincos_element(
    const double* src, double* dst1, double* dst2) {
  const double* at = src;
  const double* const end = nullptr;
  if constexpr (__is_same(Grade, A53))
    ASSEMBLY(ONE_ELEMENT(A53))
  else
    ASSEMBLY(ONE_ELEMENT(A50))
}

template <class Grade>
static Status sincos_64f(const double* src, double* dst1, double* dst2, int32_t len) {
  return run_in_range(
      {src, src, dst1, dst2}, len,
      [=](int32_t i, int32_t last) { return sincos_blocks<Grade>(src, dst1, dst2, i, last); },
      [=](int32_t i, int32_t last) { return noxd_large_sincos(src, dst1, dst2, i, last); },
      [=](int32_t i) { sincos_element<Grade>(src + i, dst1 + i, dst2 + i); },
      [=](int32_t i, Status* status) { noxdSinCos_SC_HA(i, src, dst1, dst2, status); });
}

LUX_KERNEL(SinCos, 64f, A53, 1_2) { return sincos_64f<A53>(LUX_ARGS_1_2, len); }
LUX_KERNEL(SinCos, 64f, A50, 1_2) { return sincos_64f<A50>(LUX_ARGS_1_2, len); }
