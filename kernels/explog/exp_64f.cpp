// SPDX-License-Identifier: MIT
//
// e^x of double-precision arrays, on the x87 unit at 64-bit precision.
//
//   t = x log2(e),  u = t + 1.5 2^38 stored as a double, k = round(2^14 t) its low word,
//   r = t - (u - 1.5 2^38), |r| <= 2^-15,  k = ((m 32 + j2) 32 + j1) 16 + j0,
//   e^x = (((r + Q2) r + Q1) r + Q0) T3[j0] T2[j1] T1[j2] 2^m, left to right, rounded once.
//
//   |x| < 708.39599609375     pairs, or one beside another; m is added to the exponent of the stored double, which is the
//                             same as multiplying because the result is a normal number
//   beyond                    one by one with 2^m as an extended number, so that subnormal results
//                             are rounded once; +infinity from 709.78271289338409, +0 from
//                             -745.1332191019412 down
//
// Worst error found 0.7944 ulp, at 0x40862E42EDCE09BC (sampled against 200 bits).
#include "kernels/frame.h"
#include "kernels/explog/generated/exp_64f_table.h"  // static_const_table

constexpr uint32_t kFastBound = 0x4086232B;           // high word of 708.39599609375
constexpr uint64_t kSubnormal = 0x4086232BDD7ABCD3u;  // 708.3964185322642
constexpr uint64_t kOverflow = 0x40862E42FEFA39F0u;   // 709.7827128933841
constexpr uint64_t kUnderflow = 0x40874910D52D3052u;  // 745.1332191019412

#define EXP_CONSTANTS             \
  "fldl %c[q0](%[table])\n\t"     \
  "faddl %c[q0]+8(%[table])\n\t"  \
  "fldl %c[q1](%[table])\n\t"     \
  "faddl %c[q1]+8(%[table])\n\t"  \
  "fldl %c[q2](%[table])\n\t"     \
  "faddl %c[q2]+8(%[table])\n\t"  \
  "fldl %c[log2_e](%[table])\n\t" \
  "faddl %c[log2_e]+8(%[table])\n\t"

// Four constants stay on the x87 stack over a whole run of ordinary elements. st: log2(e), Q2, Q1, Q0; on top of them comes the power,
// to be multiplied by 2^m, whose exponent is left in k, in place. Operands: x, an address, and u,
// memory for a double; table; k and j to work with; shifter, t1, t2 and t3, offsets in the table.
#define EXP_ELEMENT(x, u)             \
  "fldl " x                           \
  "\n\t"                              \
  "fmul %%st(1), %%st\n\t"            \
  "fld %%st\n\t"                      \
  "fadds %c[shifter](%[table])\n\t"   \
  "fstpl " u                          \
  "\n\t"                              \
  "fldl " u                           \
  "\n\t"                              \
  "fsubs %c[shifter](%[table])\n\t"   \
  "movl " u                           \
  ", %[k]\n\t"                        \
  "fsubrp %%st, %%st(1)\n\t" /* r */  \
  "fld %%st\n\t"                      \
  "fadd %%st(3), %%st\n\t"            \
  "movl %[k], %[j]\n\t"               \
  "andl $15, %[j]\n\t"                \
  "shll $4, %[j]\n\t"                 \
  "fmul %%st(1), %%st\n\t"            \
  "fadd %%st(4), %%st\n\t"            \
  "fmulp %%st, %%st(1)\n\t"           \
  "fadd %%st(4), %%st\n\t"            \
  "fldl %c[t3](%[table],%[j])\n\t"    \
  "faddl %c[t3]+8(%[table],%[j])\n\t" \
  "movl %[k], %[j]\n\t"               \
  "andl $0x1F0, %[j]\n\t"             \
  "fmulp %%st, %%st(1)\n\t"           \
  "fldl %c[t2](%[table],%[j])\n\t"    \
  "faddl %c[t2]+8(%[table],%[j])\n\t" \
  "movl %[k], %[j]\n\t"               \
  "shrl $5, %[j]\n\t"                 \
  "andl $0x1F0, %[j]\n\t"             \
  "fmulp %%st, %%st(1)\n\t"           \
  "fldl %c[t1](%[table],%[j])\n\t"    \
  "faddl %c[t1]+8(%[table],%[j])\n\t" \
  "sarl $14, %[k]\n\t"                \
  "shll $20, %[k]\n\t"                \
  "fmulp %%st, %%st(1)\n\t"

// Up to the first element that is not below the bound. An ordinary one that is the last, or stands
// before such an element, goes alone.
//
// Six registers are all there are, so no instrumentation fits beside this.
__attribute__((no_sanitize("address", "undefined"))) static int32_t exp_elements(const double* src,
                                                                                 double* dst,
                                                                                 int32_t i,
                                                                                 int32_t last) {
  double u[2];
  uint32_t k, j;
  const int32_t before_last = last - 1;
  using Table = decltype(static_const_table);
  asm volatile(
      EXP_CONSTANTS
      "jmp 2f\n"
      "1:\n\t"  //
      EXP_ELEMENT("(%[src],%[i],8)", "%[u]")
      "fstpl (%[dst],%[i],8)\n\t"
      "addl %[k], 4(%[dst],%[i],8)\n\t"
      EXP_ELEMENT("8(%[src],%[i],8)", "8+%[u]")
      "fstpl 8(%[dst],%[i],8)\n\t"
      "addl %[k], 12(%[dst],%[i],8)\n\t"
      "addl $2, %[i]\n"
      "2:\n\t"
      "cmpl %[before_last], %[i]\n\t"
      "jge 3f\n\t"
      "movl 4(%[src],%[i],8), %[k]\n\t"
      "movl 12(%[src],%[i],8), %[j]\n\t"
      "andl $0x7FFFFFFF, %[k]\n\t"
      "andl $0x7FFFFFFF, %[j]\n\t"
      "subl %[bound], %[k]\n\t"
      "subl %[bound], %[j]\n\t"
      "andl %[k], %[j]\n\t"
      "js 1b\n"
      "3:\n\t"
      "cmpl %[before_last], %[i]\n\t"
      "jg 4f\n\t"
      "movl 4(%[src],%[i],8), %[k]\n\t"
      "andl $0x7FFFFFFF, %[k]\n\t"
      "cmpl %[bound], %[k]\n\t"
      "jae 4f\n\t"  //
      EXP_ELEMENT("(%[src],%[i],8)", "%[u]")
      "fstpl (%[dst],%[i],8)\n\t"
      "addl %[k], 4(%[dst],%[i],8)\n\t"
      "incl %[i]\n\t"
      "jmp 2b\n"
      "4:\n\t"
      "fstp %%st\n\t"
      "fstp %%st\n\t"
      "fstp %%st\n\t"
      "fstp %%st\n\t"
      : [i] "+r"(i), [u] "=o"(u), [k] "=&r"(k), [j] "=&r"(j)
      : [src] "r"(src), [dst] "r"(dst), [before_last] "m"(before_last), [table] "r"(&static_const_table),
        [bound] "i"(kFastBound), [shifter] "i"(offsetof(Table, shifter)),
        [t1] "i"(offsetof(Table, t1)), [t2] "i"(offsetof(Table, t2)),
        [t3] "i"(offsetof(Table, t3)), [q0] "i"(offsetof(Table, q0)),
        [q1] "i"(offsetof(Table, q1)), [q2] "i"(offsetof(Table, q2)),
        [log2_e] "i"(offsetof(Table, log2_e))
      : "cc", LUX_X87_STACK);
  return i;
}

// For any exponent. Gives the middle table index too.
static double exp_scaled(const double* src, int32_t* j1) {
  double u;
  uint32_t k, j;
  long double power;
  using Table = decltype(static_const_table);
  asm volatile(
      EXP_CONSTANTS EXP_ELEMENT("(%[src])", "%[u]")
      "fstp %%st(4)\n\t"
      "fstp %%st\n\t"
      "fstp %%st\n\t"
      "fstp %%st\n\t"
      : "=&t"(power), [u] "=m"(u), [k] "=&r"(k), [j] "=&r"(j)
      : [src] "r"(src), [table] "r"(&static_const_table), [shifter] "i"(offsetof(Table, shifter)),
        [t1] "i"(offsetof(Table, t1)), [t2] "i"(offsetof(Table, t2)),
        [t3] "i"(offsetof(Table, t3)), [q0] "i"(offsetof(Table, q0)),
        [q1] "i"(offsetof(Table, q1)), [q2] "i"(offsetof(Table, q2)),
        [log2_e] "i"(offsetof(Table, log2_e)), "m"(*src)
      : "cc", "st(1)", "st(2)", "st(3)", "st(4)", "st(5)", "st(6)", "st(7)");
  *j1 = int32_t(load_words(&u).lower) >> 4 & 31;
  return store_f64(double(power * power_of_two(int32_t(k) >> 20)));
}

static void _ExpSc(const Arrays<double>& arrays, int32_t i, Status* status) {
  double* const y = arrays.dst1 + i;
  const uint64_t x = load_bits(arrays.src1 + i), a = magnitude<double>(x);
  const bool negative = x != a, infinite = a == Format<double>::kInf;
  if (a > Format<double>::kInf) {
    store_bits(y, quieted<double>(x));
  } else if (!negative && a >= kOverflow) {
    store_bits(y, Format<double>::kInf);
    if (!infinite) _ErrorCall(arrays, LUX_OVERFLOW, i, status);
  } else if (negative && a >= kUnderflow) {
    store_bits(y, 0);
    if (!infinite) _ErrorCall(arrays, LUX_UNDERFLOW, i, status);
  } else {
    int32_t j1;
    in_memory(y) = exp_scaled(arrays.src1 + i, &j1);
    // Programs know subnormal results by an even code below 64: twice the middle index.
    if (negative && a >= kSubnormal) _ErrorCall(arrays, 2 * j1, i, status);
  }
}

static Status exp_64f(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 1>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        // Of many special elements in a row each would wait for the constants.
        return upper_magnitude(src + i) < kFastBound ? exp_elements(src, dst, i, last) : i;
      },
      [&](int32_t i, Status* status) { _ExpSc(arrays, i, status); });
}

LUX_KERNELS_64F(Exp, 1_1, exp_64f)
