// SPDX-License-Identifier: MIT
//
// What the natural and the decimal logarithm of double-precision arrays share; they differ in their
// tables. On the x87 unit at 64-bit precision:
//
//   x = 2^e z, 1 <= z < 2, i the upper eight fraction bits of z, f the other 44 as a fraction,
//   t = f / (1 + i/256) by a tabulated reciprocal, 0 <= t < 2^-8,
//   log x = t (a0 + t (a1 + ... + t a5)) + ((e log 2 + high[i]) + low[i]), rounded once.
//
//   normal numbers              pairs; when one of two does not belong here, both go one by one
//   0.998046875 <= x < 1        where that sum would cancel: s (b0 + s (b1 + ... + s b5)),
//                               s = x - 1
//   subnormal                   the processor's logarithm
#ifndef LUX_KERNELS_EXPLOG_LOG_64F_H
#define LUX_KERNELS_EXPLOG_LOG_64F_H

#include "kernels/frame.h"
#include "kernels/explog/times_log2.h"
#include "kernels/lanes.h"

struct LogTable {
  struct {
    double high, low;   // log(1 + i/256)
    double reciprocal;  // times 2^-52, since it multiplies f as an integer
  } interval[256];
  double main[6], near_one[6];  // the highest power first
  // log 2, exactly their sum: an extended number takes four to twelve cycles to load.
  struct {
    double high, low;
  } two;
};

// Upper words.
constexpr uint32_t kMinusInf = 0xFFF00000;
constexpr uint32_t kNearOne = 0x3FEFF;  // upper 20 bits of 0.998046875 to 1 - 2^-53

alignas(16) static const uint64_t kLowFraction[2] = {0x00000FFFFFFFFFFF, 0x00000FFFFFFFFFFF};

// Assembly. Operands: src, dst and the index i of the pair; f and e, the fractions and exponents;
// table; k and j to work with; main, an offset in the table; offset, normals and near_one, bounds
// of the screening.
#define LOG_SCREEN(lane)            \
  "movl 4+8*" #lane                 \
  "(%[src],%[i],8), %[k]\n\t"       \
  "leal %c[offset](%[k]), %[j]\n\t" \
  "shrl $12, %[k]\n\t"              \
  "cmpl %[normals], %[j]\n\t"       \
  "jae 3f\n\t"                      \
  "cmpl %[near_one], %[k]\n\t"      \
  "je 3f\n\t"

#define LOG_OF_TWO             \
  "fldl %c[two](%[table])\n\t" \
  "faddl %c[two]+8(%[table])\n\t"

// st: log 2. The upper 20 bits of x are the exponent and i; an interval has 24 bytes.
#define LOG_ELEMENT(lane)           \
  "movl 4+8*" #lane                 \
  "(%[src],%[i],8), %[k]\n\t"       \
  "movl %[k], %[j]\n\t"             \
  "shrl $20, %[k]\n\t"              \
  "shrl $12, %[j]\n\t"              \
  "subl $1023, %[k]\n\t"            \
  "andl $255, %[j]\n\t"             \
  "movl %[k], 4*" #lane             \
  "+%[e]\n\t"                       \
  "leal (%[j],%[j],2), %[j]\n\t"    \
  "fildll 8*" #lane                 \
  "+%[f]\n\t"                       \
  "fmull 16(%[table],%[j],8)\n\t"   \
  "fldl %c[main](%[table])\n\t"     \
  "fmul %%st(1), %%st\n\t"          \
  "faddl %c[main]+8(%[table])\n\t"  \
  "fmul %%st(1), %%st\n\t"          \
  "faddl %c[main]+16(%[table])\n\t" \
  "fmul %%st(1), %%st\n\t"          \
  "faddl %c[main]+24(%[table])\n\t" \
  "fmul %%st(1), %%st\n\t"          \
  "faddl %c[main]+32(%[table])\n\t" \
  "fmul %%st(1), %%st\n\t"          \
  "faddl %c[main]+40(%[table])\n\t" \
  "fmulp %%st, %%st(1)\n\t"         \
  "fildl 4*" #lane                  \
  "+%[e]\n\t"                       \
  "fmul %%st(2), %%st\n\t"          \
  "faddl (%[table],%[j],8)\n\t"     \
  "faddl 8(%[table],%[j],8)\n\t"    \
  "faddp %%st, %%st(1)\n\t"         \
  "fstpl 8*" #lane "(%[dst],%[i],8)\n\t"

// Six registers are all there are, so no instrumentation fits beside this. The fractions are cut
// out of both elements at once: a double that is stored in halves cannot be loaded without a stall.
__attribute__((no_sanitize("address", "undefined"))) static inline int32_t log_pairs(
    const LogTable& table, const double* src, double* dst, int32_t i, int32_t last) {
  alignas(16) uint64_t f[2];
  int32_t e[2];
  uint32_t k, j;
  asm volatile(
      LOG_OF_TWO
      "movaps (%[low_fraction]), %%xmm1\n\t"
      "jmp 2f\n"
      "1:\n\t"  //
      LOG_SCREEN(0) LOG_SCREEN(1)
      "movups (%[src],%[i],8), %%xmm0\n\t"
      "andps %%xmm1, %%xmm0\n\t"
      "movaps %%xmm0, %[f]\n\t"  //
      LOG_ELEMENT(0) LOG_ELEMENT(1)
      "addl $2, %[i]\n"
      "2:\n\t"
      "cmpl %[last], %[i]\n\t"
      "jl 1b\n"
      "3:\n\t"
      "fstp %%st\n\t"
      : [i] "+r"(i), [f] "=o"(f), [e] "=o"(e), [k] "=&r"(k), [j] "=&r"(j)
      : [src] "r"(src), [dst] "r"(dst), [last] "m"(last), [table] "r"(&table),
        [low_fraction] "[k]"(kLowFraction), [offset] "i"(-int32_t(Upper<double>::kSmallestNormal)),
        [normals] "i"(Upper<double>::kInf - Upper<double>::kSmallestNormal),
        [near_one] "i"(kNearOne), [two] "i"(offsetof(LogTable, two)), [main] "i"(offsetof(LogTable, main))
      : "cc", "xmm0", "xmm1", LUX_X87_STACK);
  return i;
}

static inline long double near_one(const double (&coefficient)[6], long double t) {
  long double sum = coefficient[0];
  for (int k = 1; k < 6; ++k) sum = sum * t + coefficient[k];
  return sum * t;
}

// log 2 comes on the stack, where the steps leave it.
__attribute__((no_sanitize("address", "undefined"), noinline)) static void log_element(
    const LogTable& table, const double* src, double* dst) {
  uint64_t f;
  int32_t e;
  uint32_t k, j;
  store_half(&f, _mm_and_ps(load_half(src), load_half(kLowFraction)));
  asm volatile(LOG_OF_TWO LOG_ELEMENT(0) "fstp %%st\n\t"
               : [e] "=m"(e), [k] "=&r"(k), [j] "=&r"(j)
               : [src] "r"(src), [dst] "r"(dst), [i] "r"(0), [f] "m"(f), [table] "r"(&table),
                 [two] "i"(offsetof(LogTable, two)), [main] "i"(offsetof(LogTable, main))
               : "cc", LUX_X87_STACK);
}

static inline void log_scalar(const LogTable& table, const Arrays<double>& arrays, int32_t i,
                              Status* status) {
  const double* const src = arrays.src1 + i;
  double* const dst = arrays.dst1 + i;
  const uint64_t x = load_bits(src), a = magnitude<double>(x);
  const uint32_t upper = uint32_t(x >> 32);
  // The upper word alone decides what is negative, so NaNs with that of -infinity are.
  if (a > Format<double>::kInf && upper != kMinusInf) {
    store_bits(dst, quieted<double>(x));
  } else if (a == 0) {
    store_bits(dst, Format<double>::kSign | Format<double>::kInf);
    _ErrorCall(arrays, LUX_POLE, i, status);
  } else if (x != a) {
    store_bits(dst, Format<double>::kDefaultNaN);
    _ErrorCall(arrays, LUX_DOMAIN, i, status);
  } else if (a == Format<double>::kInf) {
    store_bits(dst, x);
  } else if (upper < Upper<double>::kSmallestNormal) {
    in_memory(dst) =
        double(times_log2((long double)table.two.high + table.two.low, load_extended(src)));
  } else if (upper >> 12 == kNearOne) {
    in_memory(dst) = double(near_one(table.near_one, load_extended(src) - 1));
  } else {
    log_element(table, src, dst);
  }
}

template <class Scalar>
static inline Status log_64f(const LogTable& table, Scalar scalar, const double* src, double* dst,
                             int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 2>(
      arrays, len, [&](int32_t i, int32_t last) { return log_pairs(table, src, dst, i, last); },
      [&](int32_t i, Status* status) { scalar(arrays, i, status); });
}

#endif
