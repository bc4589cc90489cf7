// SPDX-License-Identifier: MIT
//
// tan x of single-precision arrays: n = round(x / (pi/2)), r = x - n pi/2, |r| <= pi/4,
//
//   tan r = (r + T1 r^3) / (1 + U1 r^2 + U2 r^4),
//
// and the negated reciprocal when n is odd.
//
//   A24        |x| <= 128000    53-bit precision; worst error 0.9356 ulp, at 0x4078225B
//   A21, A11   |x| <= 500000    single precision; worst error 3.8720 ulp, at 0x4017F616
//   beyond                      the handlers of large arguments
#include "kernels/trig/tan_32f_step.h"
#include "kernels/trig/trig_32f.h"

// Zeros go to the handler: the sum of the numerator would lose the sign of -0.
static inline bool in_range(uint32_t x, uint32_t bound) { return 2 * x - 2 <= 2 * bound - 2; }

static void tangent_x87(const float* src, float* dst, int32_t count) {
  int32_t n[kChunk];
  double r[kChunk];
  for (int32_t i = 0; i < count; ++i) put(n + i, in_memory(src + i) * kHalfPi.inverse);
  reduce_pass(src, n, r, count, kHalfPi);
  for (int32_t i = 0; i < count; ++i) {
    const double r2 = r[i] * r[i];
    double quotient[2];  // numerator and denominator
    quotient[0] = r[i] + kT[0] * r[i] * r2;
    quotient[1] = 1 + r2 * (kU[0] + r2 * kU[1]);
    const uint32_t odd = uint32_t(n[i]) & 1;
    store_signed(dst + i, quotient[odd] / quotient[odd ^ 1], odd << 31);
  }
}

static Status tan_a24(const float* src, float* dst, int32_t len) {
  return run_a24<&WideLibrary::Tan_32f_A24>(
      {src, src, dst, dst}, len, [](uint32_t x) { return in_range(x, kTangentA24); },
      [=](int32_t first, int32_t count) { tangent_x87(src + first, dst + first, count); },
      [=](int32_t i, int32_t last) { return noxs_large_tangents(src, dst, i, last, kTangentA24); },
      [=](int32_t i, Status* status) { noxsTan_SC_HA(i, src, dst, status); });
}

static Status tan_a21(const float* src, float* dst, int32_t len) {
  return run_a21<&WideLibrary::Tan_32f_A21>(
      {src, src, dst, dst}, len, kHalfPi, kSmall, kTangentA21,
      [](uint32_t x) { return in_range(x, kTangentA21); },
      [](__m128 x) { return locate_quadrant(x); },
      [](__m128 shifted, __m128 r, __m128 s, float* y, float*) {
        store_lanes(y, tangent_of(shifted, r, s));
      },
      [=](int32_t i, int32_t last) { return noxs_large_tangents(src, dst, i, last, kTangentA21); },
      [=](int32_t i, Status* status) { noxsTan_SC_LA(i, src, dst, status); });
}

LUX_KERNEL(Tan, 32f, A24, 1_1) { return tan_a24(src, dst, len); }
LUX_KERNEL(Tan, 32f, A21, 1_1) { return tan_a21(src, dst, len); }
LUX_KERNEL_ALIAS(Tan, 32f, A11, 1_1, A21)
