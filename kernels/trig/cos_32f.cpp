// SPDX-License-Identifier: MIT
//
// cos x of single-precision arrays, as (-1)^n sin(x - (n - 1/2) pi) with n = round(x / pi + 1/2)
// and the polynomial of the sine.
//
//   A24        |x| <= 500000    53-bit precision; worst error 0.8011 ulp, at 0x404C083E
//   A21, A11   |x| <= 10048     single precision; worst error 2.8892 ulp, at 0x39AAB222
//   beyond                      the handlers of large arguments
//
// pi/2 rounded to single makes the A21 cosine of 0 one place larger than 1.
#include "kernels/trig/sine_32f_step.h"
#include "kernels/trig/trig_32f.h"

// m = 2n - 1 halves of pi.
static void cosine_x87(const float* src, float* dst, int32_t count) {
  int32_t m[kChunk];
  double r[kChunk];
  for (int32_t i = 0; i < count; ++i) {
    put(m + i, (in_memory(src + i) + kPiOver2) * kPi.inverse);
    m[i] = 2 * m[i] - 1;
  }
  reduce_pass(src, m, r, count, kHalfPi);
  for (int32_t i = 0; i < count; ++i)
    store_signed(dst + i, sine_polynomial<double>(r[i], r[i] * r[i]), uint32_t(~m[i] & 2) << 30);
}

static Status cos_a24(const float* src, float* dst, int32_t len) {
  return run_a24<&WideLibrary::Cos_32f_A24>(
      {src, src, dst, dst}, len, [](uint32_t x) { return within(x, kCosineA24); },
      [=](int32_t first, int32_t count) { cosine_x87(src + first, dst + first, count); },
      [=](int32_t i, int32_t last) { return noxs_large_cosines(src, dst, i, last, kCosineA24); },
      [=](int32_t i, Status* status) { noxsCos_SC_HA(i, src, dst, status); });
}

static Status cos_a21(const float* src, float* dst, int32_t len) {
  return run_a21<&WideLibrary::Cos_32f_A21>(
      {src, src, dst, dst}, len, kPi, 0, kCosineA21,
      [](uint32_t x) { return within(x, kCosineA21); }, [](__m128 x) { return locate_cosine(x); },
      [](__m128 shifted, __m128 r, __m128, float* y, float*) {
        store_lanes(y, sine_of(shifted, r, r));
      },
      [=](int32_t i, int32_t last) { return noxs_large_cosines(src, dst, i, last, kCosineA21); },
      [=](int32_t i, Status* status) { noxsCos_SC_LA(i, src, dst, status); });
}

LUX_KERNEL(Cos, 32f, A24, 1_1) { return cos_a24(src, dst, len); }
LUX_KERNEL(Cos, 32f, A21, 1_1) { return cos_a21(src, dst, len); }
LUX_KERNEL_ALIAS(Cos, 32f, A11, 1_1, A21)
