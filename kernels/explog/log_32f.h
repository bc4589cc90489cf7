// SPDX-License-Identifier: MIT
//
// What the natural and the decimal logarithm of single-precision arrays share; they differ in their
// tables. On the x87 unit at 53-bit precision:
//
//   x = 2^e z, 1 <= z < 2, i the upper eight fraction bits of z,
//   log x = ((c3[i] z + c2[i]) z + c1[i]) z + c0[i] + e log 2, rounded once.
//
// Elements go in pairs, an odd last one alone. Both of a pair in which one is zero, subnormal,
// negative, infinite or a NaN are computed by the processor's logarithm instead.
#ifndef LUX_KERNELS_EXPLOG_LOG_32F_H
#define LUX_KERNELS_EXPLOG_LOG_32F_H

#include "kernels/frame.h"
#include "kernels/explog/log_32f_table.h"
#include "kernels/explog/times_log2.h"
#include "kernels/lanes.h"

constexpr uint32_t kMinusInf = Format<float>::kSign | Format<float>::kInf;

// Assembly. Operands: src, dst and the index i of the pair; z, the significands; table; k and j to
// work with; exponent, an offset in the table; smallest and normals, bounds of the screening.

// k: the element's pattern less that of 2^-126, whose exponent field is one lower.
#define LOG_LOAD(lane)        \
  "movl 4*" #lane             \
  "(%[src],%[i],4), %[k]\n\t" \
  "subl %[smallest], %[k]\n\t"

#define LOG_SCREEN(lane)      \
  LOG_LOAD(lane)              \
  "cmpl %[normals], %[k]\n\t" \
  "jae 3f\n\t"

// A cubic has 32 bytes.
#define LOG_ELEMENT(lane)                     \
  "movl %[k], %[j]\n\t"                       \
  "shrl $10, %[j]\n\t"                        \
  "andl $0x1FE0, %[j]\n\t"                    \
  "shrl $23, %[k]\n\t"                        \
  "flds 4*" #lane                             \
  "+%[z]\n\t"                                 \
  "fldl (%[table],%[j])\n\t"                  \
  "fmul %%st(1), %%st\n\t"                    \
  "faddl 8(%[table],%[j])\n\t"                \
  "fmul %%st(1), %%st\n\t"                    \
  "faddl 16(%[table],%[j])\n\t"               \
  "fmulp %%st, %%st(1)\n\t"                   \
  "faddl 24(%[table],%[j])\n\t"               \
  "faddl %c[exponent]+8(%[table],%[k],8)\n\t" \
  "fstps 4*" #lane "(%[dst],%[i],4)\n\t"

constexpr uint32_t kFraction = Format<float>::kFraction, kOne = Format<float>::kOne;
static const BitLanes kSplit[2] = {{{kFraction, kFraction, kFraction, kFraction}},
                                   {{kOne, kOne, kOne, kOne}}};

// Six registers are all there are, so no instrumentation fits beside this. Upper lane first: its
// pattern is still in a register from the screening.
__attribute__((no_sanitize("address", "undefined"))) static inline int32_t log_pairs(
    const LogTable& table, const float* src, float* dst, int32_t i, int32_t last) {
  float z[2];
  uint32_t k, j;
  asm volatile(
      "movaps (%[split]), %%xmm1\n\t"
      "movaps 16(%[split]), %%xmm2\n\t"
      "jmp 2f\n"
      "1:\n\t"  //
      LOG_SCREEN(0) LOG_SCREEN(1)
      "movlps (%[src],%[i],4), %%xmm0\n\t"
      "andps %%xmm1, %%xmm0\n\t"
      "orps %%xmm2, %%xmm0\n\t"
      "movlps %%xmm0, %[z]\n\t"  //
      LOG_ELEMENT(1) LOG_LOAD(0) LOG_ELEMENT(0)
      "addl $2, %[i]\n"
      "2:\n\t"
      "cmpl %[last], %[i]\n\t"
      "jl 1b\n"
      "3:\n\t"
      : [i] "+r"(i), [z] "=o"(z), [k] "=&r"(k), [j] "=&r"(j)
      : [src] "r"(src), [dst] "r"(dst), [last] "m"(last), [table] "r"(&table),
        [split] "[k]"(kSplit), [exponent] "i"(offsetof(LogTable, exponent)),
        [smallest] "i"(Format<float>::kSmallestNormal),
        [normals] "i"(Format<float>::kInf - Format<float>::kSmallestNormal)
      : "cc", "xmm0", "xmm1", "xmm2", LUX_X87_STACK);
  return i;
}

__attribute__((no_sanitize("address", "undefined"), noinline)) static void log_element(
    const LogTable& table, const float* src, float* dst) {
  float z;
  uint32_t k, j;
  store_lane(&z, significand_of(load_lane(src)));
  asm volatile(
      LOG_LOAD(0) LOG_ELEMENT(0)
      : [k] "=&r"(k), [j] "=&r"(j)
      : [src] "r"(src), [dst] "r"(dst), [i] "r"(0), [z] "m"(z), [table] "r"(&table),
        [exponent] "i"(offsetof(LogTable, exponent)), [smallest] "i"(Format<float>::kSmallestNormal)
      : "cc", LUX_X87_STACK);
}

template <auto kStep>
static inline Status log_32f(const LogTable& table, const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, 2>(
      arrays, len,
      with_wide_step<Unit::kX87, kStep>(
          arrays, len,
          [&](int32_t i, int32_t last) { return log_pairs(table, src, dst, i, last); }),
      [&](int32_t i, Status* status) {
        const uint32_t x = load_bits(src + i);
        // Of the ordinary elements that come here, only an odd last one has no special neighbour.
        const bool alone = i % 2 == 0 && i + 1 == len;
        if (magnitude<float>(x) > Format<float>::kInf) {
          store_bits(dst + i, quieted<float>(x));
        } else if (is_zero<float>(x)) {
          store_bits(dst + i, kMinusInf);
          _ErrorCall(arrays, LUX_POLE, i, status);
        } else if (x & Format<float>::kSign) {
          store_bits(dst + i, Format<float>::kDefaultNaN);
          _ErrorCall(arrays, LUX_DOMAIN, i, status);
        } else if (x == Format<float>::kInf) {
          store_bits(dst + i, x);
        } else if (alone && x >= Format<float>::kSmallestNormal) {
          log_element(table, src + i, dst + i);
        } else {
          in_memory(dst + i) = store_f32(float(times_log2(table.two, load_extended(src + i))));
        }
      });
}

#endif
