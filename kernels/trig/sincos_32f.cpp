// SPDX-License-Identifier: MIT
//
// sin x and cos x of single-precision arrays: n = round(x / (pi/2)), r = x - n pi/2, |r| <= pi/4, a
// polynomial for either function, exchanged when n is odd, and the signs of the quadrant.
//
//   A24        |x| <= 1000000    53-bit precision; worst error 0.5630 ulp, at 0x46A350D2 (sine)
//   A21, A11   |x| <= 1000000    single precision; worst error 1.9321 ulp, at 0x496A1A41 (sine)
//   beyond                       the handlers of large arguments
#include "kernels/trig/trig_32f.h"

constexpr uint32_t kBound = 0x49742400;         // 1000000
constexpr uint32_t kTwoPartBound = 0x49000000;  // 2^19

// -0 goes to the handler: the sum of the sine would lose its sign.
static inline bool in_range(uint32_t x) { return within(x, kBound) && x != Format<float>::kSign; }

// s is r, or 0 where r alone counts. V is double, or four packed singles with coefficients rounded
// to C = float.
template <class C, class V>
static inline void polynomials(V r, V s, V& sine, V& cosine) {
  const V r2 = s * s;
  sine = r + (s * r2) * (C(kShortSine[0]) + r2 * (C(kShortSine[1]) + r2 * C(kShortSine[2])));
  cosine = (C(1) - C(0.5) * r2) +
           (r2 * r2) * (C(kShortCosine[0]) + r2 * (C(kShortCosine[1]) + r2 * C(kShortCosine[2])));
}

// Beyond 2^19 n high no longer fits 53 bits: with high in two pieces every product and difference
// but the last is exact again. Below, the result is the same as in two parts.
static inline double reduced_in_three(float x, int32_t n) {
  constexpr double kTop = 0x1.921fb5p+0, kRest = kHalfPi.high - kTop;
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
  return run_a24(
      {src, src, dst1, dst2}, len, [](uint32_t x) { return in_range(x); },
      [=](int32_t first, int32_t count) {
        sine_and_cosine_x87(src + first, dst1 + first, dst2 + first, count);
      },
      [=](int32_t i, int32_t last) { return noxs_large_sincos(src, dst1, dst2, i, last, kBound); },
      [=](int32_t i, Status* status) { noxsSinCos_SC_HA(i, src, dst1, dst2, status); });
}

static Status sincos_a21(const float* src, float* dst1, float* dst2, int32_t len) {
  return run_a21(
      {src, src, dst1, dst2}, len, kHalfPi, kSmall, kBound, [](uint32_t x) { return in_range(x); },
      [](__m128 x) { return to_grid<1>(x * float(kHalfPi.inverse)); },
      [](__m128 shifted, __m128 r, __m128 s, float* y1, float* y2) {
        __m128 sine, cosine;
        polynomials<float>(r, s, sine, cosine);
        const __m128 odd = bit_mask(shifted, 1), second = bit_mask(shifted, 2);
        const __m128 change = _mm_and_ps(odd, _mm_xor_ps(sine, cosine));
        sine = _mm_xor_ps(sine, change);
        cosine = _mm_xor_ps(cosine, change);
        store_lanes(y1, _mm_xor_ps(sine, sign_where(second)));
        store_lanes(y2, _mm_xor_ps(cosine, sign_where(_mm_xor_ps(second, odd))));
      },
      [=](int32_t i, int32_t last) { return noxs_large_sincos(src, dst1, dst2, i, last, kBound); },
      [=](int32_t i, Status* status) { noxsSinCos_SC_LA(i, src, dst1, dst2, status); });
}

LUX_KERNEL(SinCos, 32f, A24, 1_2) { return sincos_a24(src, dst1, dst2, len); }
LUX_KERNEL(SinCos, 32f, A21, 1_2) { return sincos_a21(src, dst1, dst2, len); }
LUX_KERNEL_ALIAS(SinCos, 32f, A11, 1_2, A21)
