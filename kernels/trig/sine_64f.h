// SPDX-License-Identifier: MIT
//
// Sine and cosine of double-precision arrays, on the x87 unit at 64-bit precision.
//
//   sine     n = x / pi to nearest, m = n
//   cosine   n = (x + pi/2) / pi to nearest, m = n - 1/2
//   r = x - m P1 - m P2 - m P3 - m P4, |r| <= pi/2
//   r + (r r^2) (C0 + r^2 (C1 + r^2 (C2 + r^2 (C3 + r^2 C4)))), the sign inverted when n is odd,
//   with the coefficients of row |r| 127/pi, to nearest
//
// P1 and P2 are subtracted at once, with the same result: m (P1 + P2) is exact, and so is what it
// leaves of x, but for tiny arguments of the cosine, where both ways round once, at the same place.
//
// Worst error found: sine 0.5278 ulp at 0x40D69FEAA9C608BC, cosine 0.5285 ulp at 0x3E86EEA553FCF57C
// (sampled against 160 bits).
#ifndef LUX_KERNELS_TRIG_SINE_64F_H
#define LUX_KERNELS_TRIG_SINE_64F_H

#include "kernels/trig/blocks_64f.h"
#include "kernels/trig/generated/sine_64f_table.h"  // static_const_table

// Assembly. Operands: src, and dst as the distance from it; n0 to n3 and j0 to j3, integers; table;
// row, word and count to work with; end and bound of the screening; the others, offsets in the
// table.

// Leaves r on the stack, and the row with the sign of r in memory.
#define SINE_REDUCE(x, n, row, after) \
  LUX_REDUCE(x, n, after)             \
  "fld %%st\n\t"                      \
  "fmull %c[rows](%[table])\n\t"      \
  "fistpl " row "\n\t"

// The index in the table of row |j|, in doubles.
#define SINE_ROW(j, row)  \
  "movl " j               \
  ", %[count]\n\t"        \
  "movl %[count], " row   \
  "\n\t"                  \
  "negl " row             \
  "\n\t"                  \
  "cmovsl %[count], " row \
  "\n\t"                  \
  "leal (" row "," row ",4), " row "\n\t"

// st before and after: q1, q0, r1^2, r0^2.
#define SINE_STEP(c)         \
  "faddl " c                 \
  "(%[table],%[word],8)\n\t" \
  "fxch\n\t"                 \
  "faddl " c                 \
  "(%[table],%[row],8)\n\t"  \
  "fmul %%st(3), %%st\n\t"   \
  "fxch\n\t"                 \
  "fmul %%st(2), %%st\n\t"

#define SINE_SIGN(n, high) \
  "movl " n                \
  ", %[count]\n\t"         \
  "shll $31, %[count]\n\t" \
  "xorl %[count], " high "\n\t"

// Two elements, interleaved: the places of x, n and row of each, and those of the results and of
// their high words.
#define SINE_PAIR(x0, x1, n0, n1, j0, j1, y0, y1, high0, high1, after) \
  SINE_REDUCE(x0, n0, j0, after)                                       \
  SINE_REDUCE(x1, n1, j1, after)                                       \
  SINE_ROW(j0, "%[row]")                                               \
  SINE_ROW(j1, "%[word]")                                              \
  "fld %%st(1)\n\t"                                                    \
  "fmul %%st, %%st\n\t"                                                \
  "fld %%st(1)\n\t"                                                    \
  "fmul %%st, %%st\n\t" /* r1^2, r0^2, r1, r0 */                       \
  "fldl %c[c4](%[table],%[row],8)\n\t"                                 \
  "fmul %%st(2), %%st\n\t"                                             \
  "fldl %c[c4](%[table],%[word],8)\n\t"                                \
  "fmul %%st(2), %%st\n\t"                                             \
  SINE_STEP("%c[c3]")                                                  \
  SINE_STEP("%c[c2]")                                                  \
  SINE_STEP("%c[c1]")                                                  \
  "faddl %c[c0](%[table],%[word],8)\n\t"                               \
  "fxch %%st(2)\n\t" /* r1^2, q0, q1, r0^2, r1, r0 */                  \
  "fmul %%st(4), %%st\n\t"                                             \
  "fmulp %%st, %%st(2)\n\t"                                            \
  "faddl %c[c0](%[table],%[row],8)\n\t"                                \
  "fxch %%st(2)\n\t" /* r0^2, r1^3 q1, q0, r1, r0 */                   \
  "fmul %%st(4), %%st\n\t"                                             \
  "fmulp %%st, %%st(2)\n\t" /* r1^3 q1, r0^3 q0, r1, r0 */             \
  "faddp %%st, %%st(2)\n\t"                                            \
  "faddp %%st, %%st(2)\n\t"                                            \
  "fstpl " y1                                                          \
  "\n\t"                                                               \
  "fstpl " y0                                                          \
  "\n\t"                                                               \
  SINE_SIGN(n1, high1)                                                 \
  SINE_SIGN(n0, high0)

#define SINE_BLOCKS(add_half_pi, subtract_half) \
  asm volatile(                                                                                 \
      "jmp 2f\n"                                                                                \
      "1:\n\t"                                                                                  \
      LUX_STEPS("(%[src])", "%[n0]", add_half_pi)                                           \
      LUX_STEPS("8(%[src])", "%[n1]", add_half_pi)                                          \
      LUX_STEPS("16(%[src])", "%[n2]", add_half_pi)                                         \
      LUX_STEPS("24(%[src])", "%[n3]", add_half_pi)                                         \
      SINE_PAIR("(%[src])", "8(%[src])", "%[n0]", "%[n1]", "%[j0]", "%[j1]",                    \
                "(%[src],%[dst])", "8(%[src],%[dst])", "4(%[src],%[dst])", "12(%[src],%[dst])", \
                subtract_half)                                                                  \
      SINE_PAIR("16(%[src])", "24(%[src])", "%[n2]", "%[n3]", "%[j2]", "%[j3]",                 \
                "16(%[src],%[dst])", "24(%[src],%[dst])", "20(%[src],%[dst])",                  \
                "28(%[src],%[dst])", subtract_half)                                             \
      "addl $32, %[src]\n"                                                                      \
      "2:\n\t"                                                                                  \
      LUX_SCREEN_BLOCK                                                                          \
      : [src] "+r"(at), [n0] "=m"(n[0]), [n1] "=m"(n[1]), [n2] "=m"(n[2]), [n3] "=m"(n[3]),     \
        [j0] "=m"(j[0]), [j1] "=m"(j[1]), [j2] "=m"(j[2]), [j3] "=m"(j[3]),                     \
        [row] "=&r"(row), [word] "=&r"(word), [count] "=&r"(count)                              \
      : [dst] "r"(distance(src, dst)), [end] "m"(end), [table] "r"(&static_const_table),        \
        [bound] "i"(kScreenBound), [inv_step] "i"(offsetof(Table, inv_pi)),                       \
        [p1] "i"(offsetof(Table, p12)), [p2] "i"(offsetof(Table, p3)),                         \
        [p3] "i"(offsetof(Table, p4)), [rows] "i"(offsetof(Table, rows)),                     \
        [half_pi] "i"(offsetof(Table, half_pi)), [half] "i"(offsetof(Table, half)),             \
        [c0] "i"(offsetof(Table, c[0][0])), [c1] "i"(offsetof(Table, c[0][1])),                 \
        [c2] "i"(offsetof(Table, c[0][2])), [c3] "i"(offsetof(Table, c[0][3])),                 \
        [c4] "i"(offsetof(Table, c[0][4]))                                                      \
      : "cc", LUX_X87_STACK)

// Six registers are all there are, so no instrumentation fits beside this.
template <bool kCosine>
__attribute__((no_sanitize("address", "undefined"))) static int32_t sine_blocks(const double* src,
                                                                                double* dst,
                                                                                int32_t i,
                                                                                int32_t last) {
  using Table = decltype(static_const_table);
  const double* at = src + i;
  const double* const end = src + last;
  int32_t n[4], j[4];
  uint32_t row, word, count;
  if constexpr (kCosine)
    SINE_BLOCKS("faddl %c[half_pi](%[table])\n\t", "fsubs %c[half](%[table])\n\t");
  else
    SINE_BLOCKS("", "");
  return int32_t(at - src);
}

// The same steps for one element: the assembly interleaves two, and as both of a pair one would
// take a quarter longer.
template <bool kCosine>
static void sine_element(const double* src, double* dst, int32_t i) {
  const auto& t = static_const_table;
  const long double x = load_extended(src + i);
  const int32_t n = nearest_integer((kCosine ? x + t.half_pi : x) * t.inv_pi);
  const long double m = kCosine ? n - (long double)t.half : n;
  const long double r = x - m * t.p12 - m * t.p3 - m * t.p4, r2 = r * r;
  const int32_t j = nearest_integer(r * t.rows);
  const double* const c = t.c[j < 0 ? -j : j];
  double* const y = dst + i;
  if (!kCosine && r == 0)
    in_memory(y) = double(r);  // a zero, whose sign the polynomial would lose
  else
    in_memory(y) =
        double(r + r * r2 * (c[0] + r2 * (c[1] + r2 * (c[2] + r2 * (c[3] + r2 * c[4])))));
  store_bits(y, load_bits(y) ^ uint64_t(uint32_t(n) << 31) << 32);
}

template <bool kCosine>
static Status sine_or_cosine(const double* src, double* dst, int32_t len,
                             void (*handler)(int32_t, const double*, double*, Status*)) {
  return run_in_range(
      {src, src, dst, dst}, len,
      [=](int32_t i, int32_t last) { return sine_blocks<kCosine>(src, dst, i, last); },
      [=](int32_t i, int32_t last) {
        return kCosine ? noxd_large_cosines(src, dst, i, last)
                       : noxd_large_sines(src, dst, i, last);
      },
      [=](int32_t i) { sine_element<kCosine>(src, dst, i); },
      [=](int32_t i, Status* status) { handler(i, src, dst, status); });
}

#endif
