// SPDX-License-Identifier: MIT
//
// Square root of single-precision arrays, packed, from the processor's estimate of 1/sqrt(x).
//
//   y = the estimate cut to 9 bits,  x = h + l with the 9 leading bits in h,
//   e = (h y y - 1) + l y y, the relative error of y squared,  p = ((1 + e)^(-1/2) - 1) / e,
//   sqrt(x) = (x y e p + l y) + h y, where h y and l y are exact.
//
// Sixteen elements from 2^-102 on are computed at once; below, l might be subnormal. When one of
// them is no such number they are done in eights, with the estimate of +0 made finite and what is
// small scaled, which leaves the bits alone. An eight with anything else goes one by one.
//
// Nineteen packed operations, and fourteen of the test for sixteen elements: where the processor
// starts three a cycle, no less than 1.88 cycles an element.
//
// Worst error 0.8467 ulp, at 0x7E1B0BE1 (sampled, with the estimate of an AMD EPYC 26/2;
// over every input 0.7608 ulp with that of an Intel Xeon 6/207).
#include "kernels/roots/root_32f.h"

enum Zeros { kNoZeros, kWithZeros };

template <Zeros kZeros>
static inline __m128 root(__m128 x) {
  constexpr uint32_t kNineBits = 0x7FFF8000, kLargest = Format<float>::kInf - 1;
  __m128 y = _mm_rsqrt_ps(x);
  if constexpr (kZeros == kWithZeros)
    y = _mm_min_ps(_mm_and_ps(y, all_lanes(kNineBits)), all_lanes(kLargest));
  else
    y = nine_bits(y);
  const __m128 h = nine_bits(x);
  const __m128 minus_l = h - x;
  const __m128 hy = h * y, minus_ly = minus_l * y;
  const __m128 e = (hy * y - 1.0f) - minus_ly * y;
  const __m128 correction = x * y * e * root_series(e);
  return (correction - minus_ly) + hy;
}

constexpr uint32_t kLeast = 0x0C800000;  // 2^-102

static inline bool sixteen_ordinary(const float* x) {
  return all_within(x, kLeast, Format<float>::kInf);
}

// Any number from +0 on.
static inline bool eight_finite(const float* x) {
  return none_outside<8>([=](int lane) {
    const uint32_t u = load_bits(x + lane);
    return u | (Format<float>::kInf - 1 - u);
  });
}

static inline __m128 scaled_root(__m128 x) {
  const __m128 one = all_lanes(1.0f), exponents = _mm_and_ps(x, all_lanes(Format<float>::kInf));
  const __m128 small = _mm_cmplt_ps(exponents, all_lanes(kLeast));
  return root<kWithZeros>(x * select(small, all_lanes(0x1p26f), one)) *
         select(small, all_lanes(0x1p-13f), one);
}

static inline int32_t root_blocks(const float* src, float* dst, int32_t i, int32_t last) {
  while (i < last) {
    for (; i + 8 < last && sixteen_ordinary(src + i); i += 16)
      for (int lane = 0; lane < 16; lane += 4)
        store_lanes(dst + i + lane, root<kNoZeros>(load_lanes(src + i + lane)));
    for (const int32_t end = i + 16 < last ? i + 16 : last; i < end; i += 8) {
      if (!eight_finite(src + i)) return i;
      const __m128 a = scaled_root(load_lanes(src + i)), b = scaled_root(load_lanes(src + i + 4));
      store_lanes(dst + i, a);
      store_lanes(dst + i + 4, b);
    }
  }
  return i;
}

static void sqrt_scalar(const Arrays<float>& arrays, int32_t i, Status* status) {
  float* const y = arrays.dst1 + i;
  const uint32_t x = load_bits(arrays.src1 + i);
  const __m128 lane = load_all_lanes(arrays.src1 + i);
  if (x - kLeast < Format<float>::kInf - kLeast) {
    store_lane(y, root<kNoZeros>(lane));
  } else if (is_zero<float>(x) || x == Format<float>::kInf) {
    store_bits(y, x);
  } else if (magnitude<float>(x) > Format<float>::kInf) {
    store_bits(y, quieted<float>(x));
  } else if (x & Format<float>::kSign) {
    store_bits(y, Format<float>::kDefaultNaN);
    _ErrorCall(arrays, LUX_DOMAIN, i, status);
  } else {
    store_lane(y, scaled_root(lane));
  }
}

static Status sqrt_32f(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<SseNearest, 8>(
      arrays, len, [=](int32_t first, int32_t last) { return root_blocks(src, dst, first, last); },
      [&](int32_t i, Status* status) { sqrt_scalar(arrays, i, status); });
}

LUX_KERNELS_32F(Sqrt, 1_1, sqrt_32f)
