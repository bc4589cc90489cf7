// SPDX-License-Identifier: MIT
//
// Reciprocal and quotient of single-precision arrays: one packed division for four elements, so
// every result is the IEEE quotient, correctly rounded.
//
// Zero divisors are reported as poles. The packed test only finds blocks to look at: under
// denormals-are-zero it takes subnormals for zeros, and the report goes by the bits.
#include "kernels/frame.h"
#include "kernels/lanes.h"

static inline __m128 zero_lanes(__m128 x) { return _mm_cmpeq_ps(x, _mm_setzero_ps()); }

// Two blocks a turn: their tests share one branch. Both quotients exist before the first store, for
// the destination may be a source.
template <class Numerator>
static inline int32_t divide_blocks(Numerator numerator, const float* divisor, float* dst,
                                    int32_t i, int32_t last) {
  for (; i + 4 < last; i += 8) {
    const __m128 d0 = load_lanes(divisor + i), d1 = load_lanes(divisor + i + 4);
    if (in_any_lane(_mm_or_ps(zero_lanes(d0), zero_lanes(d1)))) break;
    const __m128 q0 = numerator(i) / d0, q1 = numerator(i + 4) / d1;
    store_lanes(dst + i, q0);
    store_lanes(dst + i + 4, q1);
  }
  for (; i < last; i += 4) {
    const __m128 d = load_lanes(divisor + i);
    if (in_any_lane(zero_lanes(d))) break;
    store_lanes(dst + i, numerator(i) / d);
  }
  return i;
}

static inline void divide_one(const float* numerator, const float* divisor, float* dst) {
  store_lane(dst, _mm_div_ss(load_lane(numerator), load_lane(divisor)));
}

static Status inv_32f(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<SseNearest, 4>(arrays, len,
                                   with_wide_step<Unit::kSse, &WideLibrary::Inv_32f_A24>(
                                       arrays, len,
                                       [=](int32_t first, int32_t last) {
                                         const __m128 ones = all_lanes(1.0f);
                                         return divide_blocks([=](int32_t) { return ones; }, src,
                                                              dst, first, last);
                                       }),
                                   [&](int32_t i, Status* status) {
                                     static const float one = 1.0f;
                                     const uint32_t x = load_bits(src + i);
                                     divide_one(&one, src + i, dst + i);
                                     if (is_zero<float>(x)) _ErrorCall(arrays, LUX_POLE, i, status);
                                   });
}

static Status div_32f(const float* src1, const float* src2, float* dst, int32_t len) {
  const Arrays<float> arrays = {src1, src2, dst, dst};
  return run_kernel<SseNearest, 4>(
      arrays, len,
      with_wide_step<Unit::kSse, &WideLibrary::Div_32f_A24>(
          arrays, len,
          [=](int32_t first, int32_t last) {
            return divide_blocks([=](int32_t i) { return load_lanes(src1 + i); }, src2, dst, first,
                                 last);
          }),
      [&](int32_t i, Status* status) {
        const uint32_t a = load_bits(src1 + i), b = load_bits(src2 + i);
        divide_one(src1 + i, src2 + i, dst + i);
        // A NaN divided by zero is no pole here.
        if (is_zero<float>(b) && magnitude<float>(a) <= Format<float>::kInf)
          _ErrorCall(arrays, LUX_POLE, i, status);
      });
}

LUX_KERNELS_32F(Inv, 1_1, inv_32f)
LUX_KERNELS_32F(Div, 2_1, div_32f)
