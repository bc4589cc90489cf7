// SPDX-License-Identifier: MIT
//
// Arctangent of single-precision arrays, from |x| up to 1 and from 1/|x| beyond, as pi/2 - atan
// 1/|x|; the steps are in kernels/trig/arctangent_32f.h.
//
// Worst errors (every input from 2^-13 to 2^26 in magnitude): A24 0.5000 ulp, at 0x3D8D6B23; A21
// 2^-22.54 of the result, at 0x3FC7D922; A11 2^-14.79, at 0x3F725ECC.
#include "kernels/screens.h"
#include "kernels/trig/arctangent_32f.h"

// Constants -0 keep the sign of a zero.
static const Cases kCases = {{1, 0},    {}, {-1, kHalfPi}, {},  //
                             {-1, -0.}, {}, {1, -kHalfPi}, {}};

template <class Control, auto kStep, class Block, class One>
static inline Status arctangent(const float* src, float* dst, int32_t len, Block block,
                                One element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, 4>(
      arrays, len,
      with_wide_step<kUnitOf<Control>, kStep, kUnitOf<Control> != Unit::kSse>(
          arrays, len,
          [=](int32_t i, int32_t last) {
            return blocks_below<4>(src, dst, kNaNs, i, last, block);
          }),
      [=](int32_t i, Status*) {
        const uint32_t x = load_bits(src + i);
        if (magnitude<float>(x) < kNaNs)
          element(src + i, dst + i);
        else
          store_bits(dst + i, quieted<float>(x));
      });
}

LUX_DOUBLE_KERNEL(Atan);
static constexpr Listed kListed[] = {{0x3D8D6B23, 0x3D8D31C3}, {0xBD8D6B23, 0xBD8D31C3}, {}};

template <int kCount>
static inline void block(const float* src, float* dst) {
  alignas(16) float argument[4];
  double y[kCount];
  const __m128 x = load_elements<kCount>(src);
  _mm_store_ps(argument, x);
  const Ratio r = ratio_of(magnitude_of(x), all_lanes(1.0f));
  const __m128 q = r.n / _mm_min_ps(r.d, all_lanes(kLargest));
  arctangent_block(kCases, r, q, sign_of(x), y, dst);
  if (any_undecided<kMargin>(y))
    settle<kMargin, by_double<_noxomp_luxsAtan_64f_A53, kListed>>(y, argument, dst);
}

LUX_KERNEL(Atan, 32f, A24, 1_1) {
  return arctangent<BothNearest<X87_DOUBLE>, &WideLibrary::Atan_32f_A24>(
      src, dst, len, [](const float* x, float* y) { block<4>(x, y); },
      [](const float* x, float* y) { block<1>(x, y); });
}

template <const auto& kP, auto kStep>
static inline Status packed_atan(const float* src, float* dst, int32_t len) {
  return arctangent<SseNearest, kStep>(
      src, dst, len, [](const float* x, float* y) { atan_block<kP, 4>(x, y); },
      [](const float* x, float* y) { atan_block<kP, 1>(x, y); });
}

LUX_KERNEL(Atan, 32f, A21, 1_1) {
  return packed_atan<kAtan21, &WideLibrary::Atan_32f_A21>(src, dst, len);
}
LUX_KERNEL(Atan, 32f, A11, 1_1) {
  return packed_atan<kAtan11, &WideLibrary::Atan_32f_A11>(src, dst, len);
}
