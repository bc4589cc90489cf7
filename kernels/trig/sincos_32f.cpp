// SPDX-License-Identifier: MIT
//
// sin x and cos x of single-precision arrays: n = round(x / (pi/2)), r = x - n pi/2, |r| <= pi/4, a
// polynomial for either function, exchanged when n is odd, and the signs of the quadrant.
//
//   A24        |x| <= 1000000    53-bit precision; worst error 0.5630 ulp, at 0x46A350D2 (sine)
//   A21, A11   |x| <= 1000000    single precision; worst error 1.9321 ulp, at 0x496A1A41 (sine)
//   beyond                       the handlers of large arguments
#include "kernels/trig/sincos_32f_step.h"
#include "kernels/trig/trig_32f.h"

// -0 goes to the handler: the sum of the sine would lose its sign.
static inline bool in_range(uint32_t x) {
  return within(x, kSinCosBound) && x != Format<float>::kSign;
}

static inline double reduced_in_three(float x, int32_t n) {
  const double multiple = n;
  return ((x - multiple * kTop) - multiple * kRest) - multiple * kHalfPi.low;
}

static void sine_and_cosine_x87(const float* src, float* dst1, float* dst2, int32_t count) {
  int32_t n[kChunk];
  double r[kChunk];
  bool small = true;
  for (int32_t i = 0; i < count; ++i) {
    put(n + i, in_memory(src + i) * kHalfPi.inverse);
    small &= within(load_bits(src + i), kTwoPartBound);
  }
  if (small)
    reduce_pass(src, n, r, count, kHalfPi);
  else
    for (int32_t i = 0; i < count; ++i) r[i] = reduced_in_three(in_memory(src + i), n[i]);
  for (int32_t i = 0; i < count; ++i) {
    double sine, cosine;
    polynomials<double>(r[i], r[i], sine, cosine);
    const float y[2] = {store_f32(float(sine)), store_f32(float(cosine))};
    const uint32_t k = uint32_t(n[i]), odd = k & 1;
    store_bits(dst1 + i, load_bits(y + odd) ^ ((k - odd) & 2) << 30);
    store_bits(dst2 + i, load_bits(y + (odd ^ 1)) ^ ((k + odd) & 2) << 30);
  }
}

static Status sincos_a24(const float* src, float* dst1, float* dst2, int32_t len) {
  return run_a24<&WideLibrary::SinCos_32f_A24>(
      {src, src, dst1, dst2}, len, [](uint32_t x) { return in_range(x); },
      [=](int32_t first, int32_t count) {
        sine_and_cosine_x87(src + first, dst1 + first, dst2 + first, count);
      },
      [=](int32_t i, int32_t last) {
        return noxs_large_sincos(src, dst1, dst2, i, last, kSinCosBound);
      },
      [=](int32_t i, Status* status) { noxsSinCos_SC_HA(i, src, dst1, dst2, status); });
}

static Status sincos_a21(const float* src, float* dst1, float* dst2, int32_t len) {
  return run_a21<&WideLibrary::SinCos_32f_A21>(
      {src, src, dst1, dst2}, len, kHalfPi, kSmall, kSinCosBound,
      [](uint32_t x) { return in_range(x); }, [](__m128 x) { return locate_quadrant(x); },
      [](__m128 shifted, __m128 r, __m128 s, float* y1, float* y2) {
        const auto [sine, cosine] = sine_and_cosine_of(shifted, r, s);
        store_lanes(y1, sine);
        store_lanes(y2, cosine);
      },
      [=](int32_t i, int32_t last) {
        return noxs_large_sincos(src, dst1, dst2, i, last, kSinCosBound);
      },
      [=](int32_t i, Status* status) { noxsSinCos_SC_LA(i, src, dst1, dst2, status); });
}

LUX_KERNEL(SinCos, 32f, A24, 1_2) { return sincos_a24(src, dst1, dst2, len); }
LUX_KERNEL(SinCos, 32f, A21, 1_2) { return sincos_a21(src, dst1, dst2, len); }
LUX_KERNEL_ALIAS(SinCos, 32f, A11, 1_2, A21)
