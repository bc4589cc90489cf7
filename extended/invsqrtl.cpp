// SPDX-License-Identifier: MIT
//
// Reciprocal square root of one extended number: the root of 1/x and one Newton step whose residual
// x y0 y0 - 1 is summed from exact products.
#include "extended/number.h"

static const long double _invsqrtl_scales[4] = {0x1p8192L, 0x1p4096L, 0x1p-8192L, 0x1p-4096L};
constexpr double kSplitter = 0x1.8p43;

struct Split {
  long double head, tail;
};

static inline Split split(long double value) {
  const long double product = kSplitter * value, head = (product + value) - product;
  return {head, value - head};
}

// Sign, exponent and the 16 leading bits of the significand.
static inline uint32_t key(const long double* x) {
  const char* const bytes = reinterpret_cast<const char*>(x);
  uint16_t exponent, significand;
  __builtin_memcpy(&exponent, bytes + 8, 2);
  __builtin_memcpy(&significand, bytes + 6, 2);
  return uint32_t(exponent) << 16 | significand;
}

long double __invsqrtl(long double* x) {
  constexpr uint32_t kLow = 0x1FFF8000;  // 2^-8192
  const uint32_t k = key(x);
  long double scale = 1;
  if (k - kLow > 0x40000000) {
    const long double* const scales = _invsqrtl_scales + (k < kLow ? 0 : 2);
    *x *= scales[0];
    scale = scales[1];
  }
  const long double y0 = noxsqrtl_scalar(1 / *x);
  const auto [xh, xl] = split(*x);
  const auto [yh, yl] = split(y0);
  const long double xy = xh * yh;
  const long double r = (xy * yh - 1) + yl * xy + (xl * y0 + xh * yl) * y0;
  return (yh + (yl - 0.5L * y0 * r)) * scale;
}
