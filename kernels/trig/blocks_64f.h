// SPDX-License-Identifier: MIT
//
// What the double-precision kernels of sine and cosine share: their range, the walk over an array
// in blocks of four, of which the handler takes all four when one is out of range, and, in
// assembly, the screening of a block and the reduction of an element.
#ifndef LUX_KERNELS_TRIG_BLOCKS_64F_H
#define LUX_KERNELS_TRIG_BLOCKS_64F_H

#include "kernels/frame.h"
#include "kernels/trig/large_argument.h"

constexpr uint32_t kBound = 0x40FF4000;  // upper word of 128000; infinities and NaNs are above

static inline bool out_of_range(const double* x) { return upper_magnitude(x) >= kBound; }

// blocks(first, last) stops at the first block with an element out of range or a negative zero,
// whose sign polynomials lose, large(first, last) at the first that is not large altogether;
// in_range(i) computes an element, handler(i, status) takes any.
template <class Blocks, class Large, class InRange, class Handler>
static inline Status run_in_range(const Arrays<double>& arrays, int32_t len, const Blocks& blocks,
                                  const Large& large, const InRange& in_range,
                                  const Handler& handler) {
  const double* const src = arrays.src1;
  const int32_t whole = len - len % 4;
  bool handed = false;  // the block at hand goes to the handler
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      arrays, len, [&](int32_t i, int32_t last) { return alternating(i, last, blocks, large); },
      [&](int32_t i, Status* status) {
        if (i >= whole) {
          handed = out_of_range(src + i);
        } else if (i % 4 == 0) {
          handed = out_of_range(src + i) || out_of_range(src + i + 1) ||
                   out_of_range(src + i + 2) || out_of_range(src + i + 3);
        }
        if (handed)
          handler(i, status);
        else
          in_range(i);
      });
}

// Assembly. Operands: src and its end; table with inv_step, p1, p2 and p3, offsets in it; bound,
// which is kScreenBound; word and count to work with.

// Counts the element with this high word unless blocks leave it out. The word is doubled;
// the sign that falls out of it is subtracted, and -0 wraps around.
#define LUX_SCREEN(high)       \
  "movl " high                 \
  ", %[word]\n\t"              \
  "addl %[word], %[word]\n\t"  \
  "sbbl $0, %[word]\n\t"       \
  "cmpl %[bound], %[word]\n\t" \
  "adcl $0, %[count]\n\t"

// Goes to label 1 with four elements that blocks compute, on at the end and at others.
#define LUX_SCREEN_BLOCK \
  "cmpl %[end], %[src]\n\t"            \
  "je 3f\n\t"                          \
  "xorl %[count], %[count]\n\t"        \
  LUX_SCREEN("4(%[src])")              \
  LUX_SCREEN("12(%[src])")             \
  LUX_SCREEN("20(%[src])")             \
  LUX_SCREEN("28(%[src])")             \
  "cmpl $4, %[count]\n\t"              \
  "je 1b\n"                            \
  "3:"

constexpr uint32_t kScreenBound = 2 * kBound - 1;

// n = x / step to nearest, and r = x - m p1 - m p2 - m p3 on the stack. m is n, and before and
// after are empty, or instructions that shift x and then n.
#define LUX_STEPS(x, n, before) \
  "fldl " x "\n\t" before "fmull %c[inv_step](%[table])\n\tfistpl " n "\n\t"
#define LUX_REDUCE(x, n, after) \
  "fildl " n "\n\t" after       \
  "fldl %c[p1](%[table])\n\t"   \
  "fmul %%st(1), %%st\n\t"      \
  "fsubrl " x                   \
  "\n\t"                        \
  "fldl %c[p2](%[table])\n\t"   \
  "fmul %%st(2), %%st\n\t"      \
  "fsubrp %%st, %%st(1)\n\t"    \
  "fxch\n\t"                    \
  "fmull %c[p3](%[table])\n\t"  \
  "fsubrp %%st, %%st(1)\n\t"

// What to add to an address in one array for the same element of the other.
static inline int32_t distance(const double* from, const double* to) {
  return int32_t(uintptr_t(to) - uintptr_t(from));
}

#endif
