// SPDX-License-Identifier: MIT
//
// Cube root of single-precision arrays, on the x87 unit at 53-bit precision, by 64 quadratics; the
// method is in kernels/roots/cbrt_32f.h.
//
//   normal x      blocks of four; as in the header
//   subnormal x   y = 1e39 x in its place; the power is put together, its factor undoes the 1e39
//
// Worst error 0.6063 ulp, at 0x00576F7B, of normal arguments 0.5962 ulp, at 0x40807F8D (all
// inputs).
#include "kernels/roots/cbrt_32f.h"
#include "kernels/roots/generated/cbrt_32f_table.h"  // static_const_table

// The interval comes from a single's pattern.
static inline double quadratic(uint32_t x, double m) {
  constexpr uint32_t kIndex = kQuadratics<decltype(static_const_table)> - 1;
  const uint32_t j = x >> (23 - __builtin_popcount(kIndex)) & kIndex;
  const auto& table = static_const_table;
  return (table.c2[j] * m + table.c1[j]) * m + table.c0[j];
}

// The significand is that of y, everything else comes from y rounded to a single. The biased
// exponent times 64 kThird is a third of it in units of 2^-23: the quotient stands in the exponent
// field, and bits 20 and 19 tell the remainder, 00, 01 or 10.
__attribute__((noinline)) static void cbrt_subnormal(const float* src, float* dst) {
  constexpr uint32_t kThird = 43691;                      // (2^17 + 1) / 3
  constexpr uint32_t kBias = 710934528;                   // 84.75 2^23
  const long double product = load_extended(src) * 1e39;  // a double at this precision
  double y;
  float rounded;
  put_copy(&y, product);
  put(&rounded, product);
  const uint32_t u = load_bits(&rounded), third = ((u & Format<float>::kInf) >> 16) * kThird >> 1;
  // By packed logic: a double stored by words could only be loaded after a long wait.
  static const uint64_t fraction = Format<double>::kFraction, one = Format<double>::kOne;
  double m;
  store_half(&m, _mm_or_ps(_mm_and_ps(load_half(&y), load_half(&fraction)), load_half(&one)));
  float scale;
  store_bits(&scale, (u & Format<float>::kSign) | ((third + kBias) & Format<float>::kInf));
  put(dst, quadratic(u, m) * static_const_table.subnormal_factor[third >> 19 & 3] * scale);
}

// Whole blocks up to the first with a zero, a subnormal, an infinity or a NaN.
static inline int32_t cbrt_blocks(const float* src, float* dst, int32_t i, int32_t last) {
  for (; i < last; i += 4) {
    double dropped[4];
    const __m128 x = load_lanes(src + i);
    if (!all_normal(x)) break;
    cbrt_block<false>(static_const_table, src + i, x, dropped, dst + i);
  }
  return i;
}

static Status cbrt_32f(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, 4>(
      arrays, len,
      with_wide_step<Unit::kX87, &WideLibrary::Cbrt_32f_A24>(
          arrays, len, [=](int32_t i, int32_t last) { return cbrt_blocks(src, dst, i, last); }),
      [=](int32_t i, Status*) {
        const uint32_t x = load_bits(src + i), a = magnitude<float>(x);
        if (a >= Format<float>::kInf || a == 0) {
          store_bits(dst + i, quieted<float>(x));
        } else if (a < Format<float>::kSmallestNormal) {
          cbrt_subnormal(src + i, dst + i);
        } else {
          double dropped[1];
          cbrt_element(static_const_table, src + i, dropped, dst + i);
        }
      });
}

LUX_KERNELS_32F(Cbrt, 1_1, cbrt_32f)
