// SPDX-License-Identifier: MIT
//
// Reciprocal and quotient of double-precision arrays on the x87 unit at 64-bit precision, four
// elements to one division:
//
//   P = (d0 d1)(d2 d3),  R = 1/P,  1/d0 = R d1 (d2 d3),  1/d1 = R d0 (d2 d3),
//                                  1/d2 = R d3 (d0 d1),  1/d3 = R d2 (d0 d1),
//
// products from left to right. As long as P lies in the range of singles no intermediate leaves the
// extended range or loses precision; other blocks get one division an element. At most 0.502 ulp
// on the fast path; worst found 0.5008 (sampled against 200 bits).
#include "kernels/frame.h"

// P as a single would be 0 at and below the first bound and infinite from the second on. Rounding
// it to a single would tell the same but raise overflow or underflow for ordinary arguments.
constexpr long double kProductTooSmall = 0x1p-150L;
constexpr long double kProductTooLarge = 0x1.fffffep+127L + 0x1p+103L;

// Divisors between 2^-33 and 2^31 in magnitude: whatever four of them are, P is in range. With the
// sign shifted out and the lower bound taken off, one comparison of the combined patterns tells.
constexpr uint32_t kLowestDivisor = (1023 - 33) << 21;
constexpr uint32_t kDivisorRange = 64 << 21;

static inline bool product_surely_in_range(const double* d) {
  uint32_t above = 0;
  for (int lane = 0; lane < 4; ++lane) above |= 2 * upper_word(d + lane) - kLowestDivisor;
  return above < kDivisorRange;
}

static inline bool any_zero(const double* d) {
  bool zero = false;
  for (int lane = 0; lane < 4; ++lane) zero |= is_zero<double>(load_bits(d + lane));
  return zero;
}

// None of the divisors is a zero. The sum of their exponents leaves few products to be computed, and
// none with an infinity or a NaN.
static bool product_in_range(const double* d) {
  int32_t exponent = -4 * 1023;
  bool unknown = false;
  for (int lane = 0; lane < 4; ++lane) {
    const int32_t biased = int32_t(upper_magnitude(d + lane) >> 20);
    if (biased == 2047) return false;
    unknown |= biased == 0;
    exponent += biased;
  }
  // 2^exponent <= |P| < 2^(exponent + 4), but for subnormals
  if (!unknown && exponent > -150 && exponent + 4 <= 127) return true;
  if (!unknown && (exponent >= 128 || exponent + 4 <= -150)) return false;
  const long double p = __builtin_fabsl((long double)in_memory(d) * in_memory(d + 1) *
                                        ((long double)in_memory(d + 2) * in_memory(d + 3)));
  return p > kProductTooSmall && p < kProductTooLarge;
}

// Assembly. Operands: d, the divisors, and q, the results, of four elements; each `times` is empty,
// or multiplies what is on top of the stack by its dividend.
//
// Pairs are computed before they are stored, for the destination may be a source.
#define RECIPROCALS(times0, times1, times2, times3)      \
  "fldl (%[d])\n\t"                                      \
  "fmull 8(%[d])\n\t" /* d0 d1 */                        \
  "fldl 16(%[d])\n\t"                                    \
  "fmull 24(%[d])\n\t" /* d2 d3 */                       \
  "fld1\n\t"                                             \
  "fld %%st(1)\n\t"                                      \
  "fmul %%st(3), %%st\n\t"                               \
  "fdivrp\n\t" /* R, d2 d3, d0 d1 */                     \
  "fldl 8(%[d])\n\t"                                     \
  "fmul %%st(1), %%st\n\t"                               \
  "fmul %%st(2), %%st\n\t" times0                        \
  "fldl (%[d])\n\t"                                      \
  "fmul %%st(2), %%st\n\t"                               \
  "fmulp %%st, %%st(3)\n\t"                              \
  "fxch %%st(2)\n\t" times1 /* 1/d1, R, 1/d0, d0 d1 */   \
  "fldl 24(%[d])\n\t"                                    \
  "fmul %%st(2), %%st\n\t"                               \
  "fmul %%st(4), %%st\n\t" times2                        \
  "fldl 16(%[d])\n\t"                                    \
  "fmulp %%st, %%st(3)\n\t"                              \
  "fxch %%st(4)\n\t"                                     \
  "fmulp %%st, %%st(2)\n\t"                              \
  "fxch %%st(1)\n\t" times3 /* 1/d3, 1/d1, 1/d0, 1/d2 */ \
  "fstpl 24(%[q])\n\t"                                   \
  "fstpl 8(%[q])\n\t"                                    \
  "fstpl (%[q])\n\t"                                     \
  "fstpl 16(%[q])\n\t"

static inline void invert_block(const double* d, double* q) {
  asm volatile(RECIPROCALS("", "", "", "") : : [d] "r"(d), [q] "r"(q) : LUX_X87_STACK);
}

static inline void divide_block(const double* n, const double* d, double* q) {
  asm volatile(RECIPROCALS("fmull (%[n])\n\t", "fmull 8(%[n])\n\t", "fmull 16(%[n])\n\t",
                           "fmull 24(%[n])\n\t")
               :
               : [n] "r"(n), [d] "r"(d), [q] "r"(q)
               : LUX_X87_STACK);
}

// Blocks up to one that holds a zero.
template <class Block, class Quotient>
static inline int32_t reciprocal_blocks(const double* divisor, int32_t i, int32_t last, Block block,
                                        Quotient quotient) {
  for (; i < last; i += 4) {
    if (__builtin_expect(product_surely_in_range(divisor + i), true)) {
      block(i);
    } else {
      if (any_zero(divisor + i)) break;
      if (product_in_range(divisor + i))
        block(i);
      else
        for (int lane = 0; lane < 4; ++lane) quotient(i + lane);
    }
  }
  return i;
}

static Status inv_64f(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  const auto quotient = [=](int32_t i) { in_memory(dst + i) = double(1.0L / in_memory(src + i)); };
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      arrays, len,
      [=](int32_t first, int32_t last) {
        const auto block = [=](int32_t i) { invert_block(src + i, dst + i); };
        return reciprocal_blocks(src, first, last, block, quotient);
      },
      [&](int32_t i, Status* status) {
        const bool pole = is_zero<double>(load_bits(src + i));
        quotient(i);
        if (pole) _ErrorCall(arrays, LUX_POLE, i, status);
      });
}

static Status div_64f(const double* src1, const double* src2, double* dst, int32_t len) {
  const Arrays<double> arrays = {src1, src2, dst, dst};
  const auto quotient = [=](int32_t i) {
    in_memory(dst + i) = double((long double)in_memory(src1 + i) / in_memory(src2 + i));
  };
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      arrays, len,
      [=](int32_t first, int32_t last) {
        const auto block = [=](int32_t i) { divide_block(src1 + i, src2 + i, dst + i); };
        return reciprocal_blocks(src2, first, last, block, quotient);
      },
      [&](int32_t i, Status* status) {
        // The divisor alone is looked at: the dividend may be a zero or a NaN.
        const bool pole = is_zero<double>(load_bits(src2 + i));
        quotient(i);
        if (pole) _ErrorCall(arrays, LUX_POLE, i, status);
      });
}

LUX_KERNELS_64F(Inv, 1_1, inv_64f)
LUX_KERNELS_64F(Div, 2_1, div_64f)
