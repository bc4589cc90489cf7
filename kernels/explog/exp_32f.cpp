// SPDX-License-Identifier: MIT
//
// e^x of single-precision arrays, on the x87 unit at 53-bit precision.
//
//   t = x log2(e),  u = t + 1.5 2^17,  k = round(64 t) from the low bits of u as a single,
//   r = u - float(u), |r| <= 1/128,
//   e^x = 2^floor(k/64) T[k mod 64] ((r + D2) r + D1), rounded once.
//
//   |x| < 87             blocks of four; the exponent is added to the stored single, which is the
//                        same as multiplying because the result is a normal number
//   |x| < 88.72284       one by one, scaled before the only rounding
//   beyond               +infinity; a subnormal down to -103.97208; +0
//
// Worst error 0.6109 ulp, at 0xBB31DA1D (every input from 2^-27 on in magnitude).
#include "kernels/frame.h"
#include "kernels/explog/generated/exp_32f_table.h"  // static_const_table
#include "kernels/screens.h"

constexpr uint32_t kPackedBound = 0x42AE0000;  // 87.0: results are normal below
constexpr uint32_t kOverflow = 0x42B17218;     // 88.72283935546875
constexpr uint32_t kUnderflow = 0x42CFF1B4;    // 103.97207641601562: e^-x is the smallest subnormal

// Assembly. Operands: src, dst, the block; u and y, singles of each element; table; k and scale to
// work with; d2, d1 and shifter, offsets in the table.

// st: log2(e); on top of it comes the power, to be multiplied by 2^floor(k/64), whose exponent is
// left in `scale`, in place. The index arithmetic works on the bits of u: 0x48400000 + k, whose
// upper part vanishes when k / 64 is shifted into the exponent field.
#define EXP_POWER(lane)             \
  "flds 4*" #lane                   \
  "(%[src])\n\t"                    \
  "fmul %%st(1), %%st\n\t"          \
  "fadds %c[shifter](%[table])\n\t" \
  "fsts 4*" #lane                   \
  "+%[u]\n\t"                       \
  "fsubs 4*" #lane                  \
  "+%[u]\n\t"                       \
  "movl 4*" #lane                   \
  "+%[u], %[k]\n\t"                 \
  "fldl %c[d2](%[table])\n\t"       \
  "fadd %%st(1), %%st\n\t"          \
  "fmulp %%st, %%st(1)\n\t"         \
  "movl %[k], %[scale]\n\t"         \
  "andl $63, %[k]\n\t"              \
  "faddl %c[d1](%[table])\n\t"      \
  "andl $-64, %[scale]\n\t"         \
  "shll $17, %[scale]\n\t"          \
  "fmull (%[table],%[k],8)\n\t"

#define EXP_STORE(lane) \
  "fstps 4*" #lane      \
  "+%[y]\n\t"           \
  "addl 4*" #lane       \
  "+%[y], %[scale]\n\t" \
  "movl %[scale], 4*" #lane "(%[dst])\n\t"

#define EXP_LANES(lanes)                                                             \
  {                                                                                  \
    float u[4], y[4];                                                                \
    uint32_t k, scale;                                                               \
    using Table = decltype(static_const_table);                                      \
    asm volatile("fldl2e\n\t" lanes "fstp %%st\n\t"                                  \
                 : [u] "=o"(u), [y] "=o"(y), [k] "=&r"(k), [scale] "=&r"(scale)      \
                 : [src] "r"(src), [dst] "r"(dst), [table] "r"(&static_const_table), \
                   [d2] "i"(offsetof(Table, d2)), [d1] "i"(offsetof(Table, d1)),     \
                   [shifter] "i"(offsetof(Table, shifter))                           \
                 : LUX_X87_STACK);                                                   \
  }
#define EXP_LANE(lane) EXP_POWER(lane) EXP_STORE(lane)

static inline void exp_block(const float* src, float* dst) {
  EXP_LANES(EXP_LANE(0) EXP_LANE(1) EXP_LANE(2) EXP_LANE(3))
}

static inline void exp_element(const float* src, float* dst) { EXP_LANES(EXP_LANE(0)) }

// Without a bound on the exponent. The power of two comes in two halves: each is a normal single,
// put together in one store, which an extended number is not; their product is exact.
static float exp_scaled(const float* src) {
  float u;
  uint32_t k, scale;
  long double power;
  using Table = decltype(static_const_table);
  asm volatile("fldl2e\n\t" EXP_POWER(0) "fstp %%st(1)\n\t"
               : "=&t"(power), [u] "=m"(u), [k] "=&r"(k), [scale] "=&r"(scale)
               : [src] "r"(src), [table] "r"(&static_const_table), [d2] "i"(offsetof(Table, d2)),
                 [d1] "i"(offsetof(Table, d1)), [shifter] "i"(offsetof(Table, shifter)), "m"(*src)
               : "cc", "st(1)", "st(2)", "st(3)", "st(4)", "st(5)", "st(6)", "st(7)");
  const int32_t exponent = int32_t(scale) >> 23, half = exponent / 2;
  float halves[2];
  store_bits(halves, uint32_t(Format<float>::kBias + half) << Format<float>::kFractionBits);
  store_bits(halves + 1, uint32_t(Format<float>::kBias + exponent - half)
                             << Format<float>::kFractionBits);
  return store_f32(float(power * load_extended(halves) * load_extended(halves + 1)));
}

static Status exp_32f(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, 4>(
      arrays, len,
      with_wide_step<Unit::kX87, &WideLibrary::Exp_32f_A24>(
          arrays, len,
          [=](int32_t i, int32_t last) {
            return blocks_below<4>(src, dst, kPackedBound, i, last, exp_block);
          }),
      [&](int32_t i, Status* status) {
        const uint32_t x = load_bits(src + i), a = magnitude<float>(x);
        const bool negative = x != a, infinite = a == Format<float>::kInf;
        if (a < kPackedBound) {
          exp_element(src + i, dst + i);
        } else if (a > Format<float>::kInf) {
          store_bits(dst + i, quieted<float>(x));
        } else if (!negative && a >= kOverflow) {
          store_bits(dst + i, Format<float>::kInf);
          if (!infinite) _ErrorCall(arrays, LUX_OVERFLOW, i, status);
        } else if (negative && a > kUnderflow) {
          store_bits(dst + i, 0);
          if (!infinite) _ErrorCall(arrays, LUX_UNDERFLOW, i, status);
        } else {
          in_memory(dst + i) = exp_scaled(src + i);
        }
      });
}

LUX_KERNELS_32F(Exp, 1_1, exp_32f)
