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
#include "kernels/trig/sine_polynomial_32f.h"
#include "kernels/trig/trig_32f.h"

constexpr uint32_t kBoundA24 = 0x48F42400;  // 500000
constexpr uint32_t kBoundA21 = 0x461D0000;  // 10048

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
  return run_a24(
      {src, src, dst, dst}, len, [](uint32_t x) { return within(x, kBoundA24); },
      [=](int32_t first, int32_t count) { cosine_x87(src + first, dst + first, count); },
      [=](int32_t i, int32_t last) { return noxs_large_cosines(src, dst, i, last, kBoundA24); },
      [=](int32_t i, Status* status) { noxsCos_SC_HA(i, src, dst, status); });
}

static Status cos_a21(const float* src, float* dst, int32_t len) {
  return run_a21(
      {src, src, dst, dst}, len, kPi, 0, kBoundA21, [](uint32_t x) { return within(x, kBoundA21); },
      [](__m128 x) {
        OnGrid at = to_grid<1>((x + float(kPiOver2)) * float(kPi.inverse));
        at.multiple -= 0.5f;
        return at;
      },
      [](__m128 shifted, __m128 r, __m128, float* y, float*) {
        const __m128 sine = sine_polynomial<float>(r, r * r);
        store_lanes(y, _mm_xor_ps(sine, sign_where(bit_mask(shifted, 1))));
      },
      [=](int32_t i, int32_t last) { return noxs_large_cosines(src, dst, i, last, kBoundA21); },
      [=](int32_t i, Status* status) { noxsCos_SC_LA(i, src, dst, status); });
}

LUX_KERNEL(Cos, 32f, A24, 1_1) { return cos_a24(src, dst, len); }
LUX_KERNEL(Cos, 32f, A21, 1_1) { return cos_a21(src, dst, len); }
LUX_KERNEL_ALIAS(Cos, 32f, A11, 1_1, A21)
