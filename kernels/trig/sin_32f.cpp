// SPDX-License-Identifier: MIT
//
// sin x of single-precision arrays: n = round(x / pi), r = x - n pi, |r| <= pi/2, and an odd
// polynomial of degree 9 in r, negated after its rounding to single when n is odd.
//
//   A24        |x| <= 500000     53-bit precision; worst error 0.8011 ulp, at 0x412F2EA3
//   A21, A11   |x| <= 1000000    single precision; worst error 3.9007 ulp, at 0x496A4649
//   beyond                       the handlers of large arguments
#include "kernels/trig/sine_32f_step.h"
#include "kernels/trig/trig_32f.h"

static void sine_x87(const float* src, float* dst, int32_t count) {
  int32_t n[kChunk];
  double r[kChunk];
  for (int32_t i = 0; i < count; ++i) put(n + i, in_memory(src + i) * kPi.inverse);
  reduce_pass(src, n, r, count, kPi);
  for (int32_t i = 0; i < count; ++i)
    store_signed(dst + i, sine_polynomial<double>(r[i], r[i] * r[i]), uint32_t(n[i]) << 31);
}

static Status sin_a24(const float* src, float* dst, int32_t len) {
  return run_a24<&WideLibrary::Sin_32f_A24>(
      {src, src, dst, dst}, len, [](uint32_t x) { return within(x, kSineA24); },
      [=](int32_t first, int32_t count) { sine_x87(src + first, dst + first, count); },
      [=](int32_t i, int32_t last) { return noxs_large_sines(src, dst, i, last, kSineA24); },
      [=](int32_t i, Status* status) { noxsSin_SC_HA(i, src, dst, status); });
}

static Status sin_a21(const float* src, float* dst, int32_t len) {
  return run_a21<&WideLibrary::Sin_32f_A21>(
      {src, src, dst, dst}, len, kPi, kSmall, kSineA21,
      [](uint32_t x) { return within(x, kSineA21); }, [](__m128 x) { return locate_sine(x); },
      [](__m128 shifted, __m128 r, __m128 s, float* y, float*) {
        store_lanes(y, sine_of(shifted, r, s));
      },
      [=](int32_t i, int32_t last) { return noxs_large_sines(src, dst, i, last, kSineA21); },
      [=](int32_t i, Status* status) { noxsSin_SC_LA(i, src, dst, status); });
}

LUX_KERNEL(Sin, 32f, A24, 1_1) { return sin_a24(src, dst, len); }
LUX_KERNEL(Sin, 32f, A21, 1_1) { return sin_a21(src, dst, len); }
LUX_KERNEL_ALIAS(Sin, 32f, A11, 1_1, A21)
