// SPDX-License-Identifier: MIT
//
// What the inverse hyperbolic functions of double-precision arrays share: each is ln(1 + s) for an
// s >= 0 of its own that has no cancellation. On the x87 unit at 64-bit precision:
//
//   w = 1 + s, its leading ten bits rounded give e and i, 2^-e (1 + s) near 1 + i/512,
//   z = s F + (F - 1) with F = 2^-e R[i], exact, |z| < 0.00121,
//   ln(1 + s) = e ln 2 + ln(1/R[i]) + z + z^2 P(z).
//
// R[0] is 1, so for small s z is s and everything else 0: the relative error of s stays. The fit is
// off by 2^-65 of z; z, the product, three sums and s itself round at 64 bits: together less than
// 0.003 ulp beside the last rounding.
//
// Blocks of eight, or of four at the end, in two passes, between which s stands as the exact sum of two doubles: one chain
// from root or quotient to result is longer than the processor looks ahead.
#ifndef LUX_KERNELS_HYPER_LOG1P_64F_H
#define LUX_KERNELS_HYPER_LOG1P_64F_H

#include "kernels/frame.h"
#include "kernels/hyper/generated/log1p_64f_table.h"  // kCell, kExponent, kP, kLn2
#include "kernels/hyper/log1p_domain.h"

constexpr int32_t kBlock = 8, kShortBlock = 4;
constexpr uint32_t kLargeUpper = 0x43D00000;  // 2^62

struct Argument {
  double high, low, w;  // s and 1 + s
};

static inline void split(long double s, Argument* to) {
  put(&to->w, s + 1.0f);
  put(&to->high, s);
  put(&to->low, s - to->high);
}

static inline long double log_of(const Cell& cell, const Exponent& e, long double z) {
  const long double p = (((kP[0] * z + kP[1]) * z + kP[2]) * z + kP[3]) * z + kP[4];
  return (p * (z * z) + ((long double)cell.low + e.low) + z) + ((long double)cell.high + e.high);
}

static inline long double log1p_of(const Argument& s) {
  const uint32_t k = (upper_word(&s.w) + 0x400) >> 11;
  const Cell& cell = kCell[k % 512];
  const Exponent& e = kExponent[(k >> 9) - 1023];
  const long double factor = (long double)cell.reciprocal * e.scale;
  return log_of(cell, e, (s.high + (long double)s.low) * factor + (factor - 1.0f));
}

// ln(2 a) of a finite number from 1 on.
static inline long double log_twice(uint64_t a) {
  double m;
  store_bits(&m, (a & Format<double>::kFraction) | Format<double>::kOne);
  const uint32_t k = (upper_word(&m) + 0x400) >> 11;
  const Cell& cell = kCell[k % 512];
  const int32_t e = int32_t(k >> 9) - 1023, whole = e + int32_t(a >> 52) - 1022;
  const long double factor = (long double)cell.reciprocal * kExponent[e].scale;
  const long double z = (long double)m * factor - 1.0f;
  const Exponent log = {whole * kLn2[0], whole * kLn2[1], 1};
  return log_of(cell, log, z);
}

// A family has its domain, kScale, argument(x), which is s, and special(arrays, i, status) for what
// is out of bounds.
template <class Family, int kCount>
static inline void log1p_block(const double* src, double* dst) {
  Argument s[kCount];
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) split(Family::argument(src + lane), s + lane);
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) {
    const uint32_t sign = upper_word(src + lane) & Family::kSigned;
    long double y = log1p_of(s[lane]);
    if (Family::kScale != 1) y *= Family::kScale;
    put(dst + lane, y);
    if (Family::kSigned) set_upper_bits(dst + lane, sign);
  }
}

template <class Family>
static inline Status log1p_64f(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, kShortBlock>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        for (; last - i >= kBlock && all_ordinary<Family, kBlock>(src + i); i += kBlock)
          log1p_block<Family, kBlock>(src + i, dst + i);
        for (; i < last && all_ordinary<Family, kShortBlock>(src + i); i += kShortBlock)
          log1p_block<Family, kShortBlock>(src + i, dst + i);
        return i;
      },
      [&](int32_t i, Status* status) {
        if (all_ordinary<Family, 1>(src + i))
          log1p_block<Family, 1>(src + i, dst + i);
        else
          Family::special(arrays, i, status);
      });
}

#endif
