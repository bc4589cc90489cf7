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
// small scaled, which leaves the bits alone, and so are four that are left. Where there is anything
// else, four go one by one.
//
// Nineteen packed operations, and fourteen of the test for sixteen elements: where the processor
// starts three a cycle, no less than 1.88 cycles an element.
//
// Worst error 0.8890 ulp, at 0x00136156 (every input, with the estimate of an AMD EPYC 26/2; with that
// of an Intel Xeon 6/207 0.7608 ulp).
#include "kernels/roots/root_32f.h"

static inline bool sixteen_ordinary(const float* x) {
  return all_within(x, kLeast, Format<float>::kInf);
}

// Any numbers from +0 on. Compares powers of two, zeros and infinities only.
static inline bool all_finite(__m128 a, __m128 b) {
  const __m128 infinity = all_lanes(Format<float>::kInf);
  const __m128 most = _mm_max_ps(_mm_and_ps(a, infinity), _mm_and_ps(b, infinity));
  return !in_any_lane(_mm_or_ps(_mm_or_ps(a, b), _mm_cmpeq_ps(most, infinity)));
}

// A subnormal's fraction becomes that of a normal number, which is taken away: 2^26 x, and the
// processor never meets a subnormal, with which it takes long.
static inline __m128 scaled_root(__m128 x) {
  constexpr uint32_t kBelow =
      0x0D800000;  // 2^-100, whose last place is 2^26 times that of subnormals
  const __m128 one = all_lanes(1.0f), exponents = _mm_and_ps(x, all_lanes(Format<float>::kInf));
  const __m128 subnormal = _mm_cmpeq_ps(exponents, _mm_setzero_ps());
  const __m128 small = _mm_cmplt_ps(exponents, all_lanes(kLeast));
  const __m128 below = _mm_and_ps(subnormal, all_lanes(kBelow));
  const __m128 normal = _mm_or_ps(x, below) - below;
  const __m128 scale = select(_mm_andnot_ps(subnormal, small), all_lanes(0x1p26f), one);
  return root<kWithZeros>(normal * scale) * select(small, all_lanes(0x1p-13f), one);
}

static inline int32_t root_blocks(const float* src, float* dst, int32_t i, int32_t last) {
  while (i < last) {
    for (; i + 12 < last && sixteen_ordinary(src + i); i += 16)
      for (int lane = 0; lane < 16; lane += 4)
        store_lanes(dst + i + lane, root<kNoZeros>(load_lanes(src + i + lane)));
    const int32_t end = i + 16 < last ? i + 16 : last;
    for (; i + 4 < end; i += 8) {
      const __m128 a = load_lanes(src + i), b = load_lanes(src + i + 4);
      if (!all_finite(a, b)) return i;
      const __m128 root_a = scaled_root(a), root_b = scaled_root(b);
      store_lanes(dst + i, root_a);
      store_lanes(dst + i + 4, root_b);
    }
    if (i < end) {
      const __m128 x = load_lanes(src + i);
      if (!all_finite(x, x)) return i;
      store_lanes(dst + i, scaled_root(x));
      i += 4;
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
  return run_kernel<SseNearest, 4>(
      arrays, len,
      with_wide_step<Unit::kSse, &WideLibrary::Sqrt_32f_A24>(
          arrays, len,
          [=](int32_t first, int32_t last) { return root_blocks(src, dst, first, last); }),
      [&](int32_t i, Status* status) { sqrt_scalar(arrays, i, status); });
}

LUX_KERNELS_32F(Sqrt, 1_1, sqrt_32f)
