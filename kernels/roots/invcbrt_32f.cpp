// SPDX-License-Identifier: MIT
//
// Reciprocal cube root of single-precision arrays.
//
//   A24        one of 512 quadratics, on the x87 unit; see kernels/roots/cbrt_32f.h. They are
//              off by 2^-34.53 of the result, the 53-bit steps by 2^-51
//   A21, A11   packed. y from the pattern of x: a constant less a third of the exponent and
//              fraction bits, taken in 16-bit words on the MMX unit, with the sign of x;
//                y1 = y (s0 + s1 c + s2 c^2),  c = (x y) (y y)     relative error 2^-14.94
//                y2 = y1 + y1 (1 - (x y1) (y1 y1)) / 3             A21 only
//              The products in the second step err by at most 3 2^-24 together, of which a third
//              counts, the step itself by 2 2^-29.9, the last sum by 2^-24.
//
//   normal x      blocks of four
//   subnormal x   x = +-n 2^-149 with an integer n: the same for 2 n, times 2^50
//
// Worst error, every positive input: A24 0.5000 ulp, at 0x01358575; A21 2^-23.16 of the result, at
// 0x007CE41F; A11 2^-14.93, at 0x007D613C.
#include "kernels/nearest_32f.h"
#include "kernels/roots/cbrt_32f.h"
#include "kernels/roots/invcbrt_32f_step.h"

typedef __m64 __attribute__((may_alias, aligned(1))) HalfLanes;

// The first estimate for two elements, and the same for one, which can do without the MMX unit.
static inline __m64 start(__m64 x) {
  const __m64 magnitudes = _mm_and_si64(x, _mm_set1_pi32(0x7FFFFFFF));
  return _mm_sub_pi32(_mm_set1_pi32(kStart),
                      _mm_mulhi_pu16(magnitudes, _mm_set1_pi32(kThirds << 16 | kThirds)));
}

static inline uint32_t start(uint32_t x) {
  const uint32_t a = magnitude<float>(x);
  return kStart - ((a >> 16) * kThirds & 0xFFFF0000) - ((a & 0xFFFF) * kThirds >> 16);
}

template <bool kRefined>
static inline void packed_block(const float* src, __m128 x, float* dst) {
  alignas(16) __m64 half[2];
  const HalfLanes* const patterns = reinterpret_cast<const HalfLanes*>(src);
  half[0] = start(patterns[0]);
  half[1] = start(patterns[1]);
  const __m128 y = load_halves(half, half + 1);
  store_lanes(dst, corrected<kRefined>(x, _mm_or_ps(y, sign_of(x))));
}

template <bool kRefined>
static inline int32_t packed_blocks(const float* src, float* dst, int32_t i, int32_t last) {
  for (; i < last; i += 4) {
    const __m128 x = load_lanes(src + i);
    if (!all_normal(x)) break;
    packed_block<kRefined>(src + i, x, dst + i);
  }
  _mm_empty();
  return i;
}

// Of a vector whose lanes are equal, or of which one lane counts, the compiler makes x87 code,
// which rounds differently.
static inline __m128 kept_packed(__m128 lanes) {
  asm("" : "+x"(lanes));
  return lanes;
}

template <bool kRefined>
static inline void packed_normal(uint32_t x, float* dst) {
  const __m128 number = kept_packed(all_lanes(x));
  const __m128 y = kept_packed(all_lanes(start(x) | (x & Format<float>::kSign)));
  store_lane(dst, kept_packed(corrected<kRefined>(number, y)));
}

// The step for one element; `normal` computes the ordinary ones. The packed kernels use no x87
// instruction.
template <class Normal>
static inline void inverse_cube_root(const Arrays<float>& arrays, int32_t i, Status* status,
                                     Normal normal) {
  float* const dst = arrays.dst1 + i;
  const uint32_t x = load_bits(arrays.src1 + i), a = magnitude<float>(x), sign = x ^ a;
  if (a > Format<float>::kInf) {
    store_bits(dst, quieted<float>(x));
  } else if (a == Format<float>::kInf) {
    store_bits(dst, sign);
  } else if (a == 0) {
    store_bits(dst, sign | Format<float>::kInf);
    _ErrorCall(arrays, LUX_POLE, i, status);
  } else if (a < Format<float>::kSmallestNormal) {
    const int shift = __builtin_clz(a) - 8;
    const uint32_t doubled = (uint32_t(150 - shift) << 23) + (a << shift);  // the number 2 a
    normal(sign | doubled, dst);
    store_bits(dst, load_bits(dst) + (50 << 23));
  } else {
    normal(x, dst);
  }
}

LUX_DOUBLE_KERNEL(InvCbrt);
static constexpr Listed kListed[] = {{}};

constexpr uint32_t kMargin = 0x5A000;  // 2^-34.5
constexpr auto* kAccurate = by_double<_noxomp_luxsInvCbrt_64f_A53, kListed>;

static inline int32_t table_blocks(const float* src, float* dst, int32_t i, int32_t last) {
  for (; i < last; i += 4) {
    double y[4];
    const __m128 x = load_lanes(src + i);
    if (!all_normal(x)) break;
    cbrt_block<true>(static_const_table, src + i, x, y, dst + i);
    if (any_undecided<kMargin>(y)) {
      alignas(16) float argument[4];
      _mm_store_ps(argument, x);
      settle<kMargin, kAccurate>(y, argument, dst + i);
    }
  }
  return i;
}

static Status table_driven(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, 4>(
      arrays, len,
      with_wide_step<Unit::kX87, &WideLibrary::InvCbrt_32f_A24, true>(
          arrays, len, [=](int32_t i, int32_t last) { return table_blocks(src, dst, i, last); }),
      [&](int32_t i, Status* status) {
        inverse_cube_root(arrays, i, status, [](uint32_t x, float* y) {
          float normal;
          double kept[1];
          store_bits(&normal, x);
          cbrt_element(static_const_table, &normal, kept, y);
          if (any_undecided<kMargin>(kept)) settle<kMargin, kAccurate>(kept, &normal, y);
        });
      });
}

template <bool kRefined, auto kStep>
static inline Status packed(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<SseNearest, 4>(
      arrays, len,
      with_wide_step<Unit::kSse, kStep>(
          arrays, len,
          [=](int32_t i, int32_t last) { return packed_blocks<kRefined>(src, dst, i, last); }),
      [&](int32_t i, Status* status) {
        inverse_cube_root(arrays, i, status, packed_normal<kRefined>);
      });
}

LUX_KERNEL(InvCbrt, 32f, A24, 1_1) { return table_driven(src, dst, len); }
LUX_KERNEL(InvCbrt, 32f, A21, 1_1) {
  return packed<true, &WideLibrary::InvCbrt_32f_A21>(src, dst, len);
}
LUX_KERNEL(InvCbrt, 32f, A11, 1_1) {
  return packed<false, &WideLibrary::InvCbrt_32f_A11>(src, dst, len);
}
