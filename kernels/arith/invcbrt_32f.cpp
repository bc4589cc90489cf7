// SPDX-License-Identifier: MIT
//
// Reciprocal cube root of single-precision arrays.
//
//   A24        one of 256 quadratics, on the x87 unit; see kernels/arith/cbrt_32f.h
//   A21, A11   packed. y from the pattern of x: a constant less a third of the exponent and
//   fraction
//              bits, taken in 16-bit words on the MMX unit, with the sign of x;
//                y1 = y (s0 + s1 c + s2 c^2),  c = (x y) (y y)     relative error 2^-14.94
//                y2 = y1 + y1 (1 - (x y1) (y1 y1)) / 3             A21 only
//              The products in the second step err by at most 3 2^-24 together, of which a third
//              counts, the step itself by 2 2^-29.9, the last sum by 2^-24.
//
//   normal x      blocks of four
//   subnormal x   x = +-n 2^-149 with an integer n: the same for 2 n, times 2^50
//
// Worst error from 1 to 2: A24 0.5053 ulp, at 0x3F8061DB; relative, A21 2^-23.49, at 0x3FE8032A, A11
// 2^-14.93, at 0x3FCAC5C7.
#include "kernels/arith/cbrt_32f.h"
#include "kernels/arith/invcbrt_32f_table.h"  // static_const_table, kStart, kStep

typedef __m64 __attribute__((may_alias)) HalfLanes;

// The first estimate of |x| y^3 = c for two elements.
static inline __m64 start(__m64 x) {
  const __m64 magnitudes = _mm_and_si64(x, _mm_set1_pi32(0x7FFFFFFF));
  return _mm_sub_pi32(_mm_set1_pi32(kStart), _mm_mulhi_pu16(magnitudes, _mm_set1_pi32(0x55555555)));
}

template <bool kRefined>
static inline void packed_block(const float* src, __m128 x, float* dst) {
  alignas(16) __m64 half[2];
  const HalfLanes* const patterns = reinterpret_cast<const HalfLanes*>(src);
  half[0] = start(patterns[0]);
  half[1] = start(patterns[1]);
  __m128 y = _mm_loadl_pi(_mm_setzero_ps(), half);
  y = _mm_loadh_pi(y, half + 1);
  y = _mm_or_ps(y, _mm_and_ps(x, four(Format<float>::kSign)));
  const __m128 c = _mm_mul_ps(_mm_mul_ps(x, y), _mm_mul_ps(y, y));
  __m128 step = _mm_add_ps(_mm_mul_ps(_mm_set1_ps(kStep[2]), c), _mm_set1_ps(kStep[1]));
  step = _mm_add_ps(_mm_mul_ps(step, c), _mm_set1_ps(kStep[0]));
  y = _mm_mul_ps(y, step);
  if (kRefined) {
    const __m128 cube = _mm_mul_ps(_mm_mul_ps(x, y), _mm_mul_ps(y, y));
    const __m128 rest = _mm_sub_ps(_mm_set1_ps(1.0f), cube);
    y = _mm_add_ps(y, _mm_mul_ps(_mm_mul_ps(y, _mm_set1_ps(1.0f / 3)), rest));
  }
  _mm_storeu_ps(dst, y);
}

template <bool kRefined>
static inline int32_t packed_blocks(const float* src, float* dst, int32_t i, int32_t last) {
  for (; i < last; i += 4) {
    const __m128 x = _mm_loadu_ps(src + i);
    if (!all_normal(x)) break;
    packed_block<kRefined>(src + i, x, dst + i);
  }
  _mm_empty();
  return i;
}

// One element in the first lane, ones beside it.
template <bool kRefined>
__attribute__((noinline)) static float packed_normal(uint32_t x) {
  float lanes[4];
  store_bits(lanes, x);
  for (int lane = 1; lane < 4; ++lane) lanes[lane] = 1.0f;
  packed_blocks<kRefined>(lanes, lanes, 0, 4);
  return lanes[0];
}

// The step for one element, with `normal` for the ordinary ones.
template <class Normal>
static inline void inverse_cube_root(const Arrays<float>& arrays, int32_t i, Status* status,
                                     Normal normal) {
  float* const dst = arrays.dst1 + i;
  const uint32_t x = load_bits(arrays.src1 + i), a = magnitude<float>(x), sign = x ^ a;
  if (a > kExponent) {
    store_bits(dst, quieted<float>(x));
  } else if (a == kExponent) {
    store_bits(dst, sign);
  } else if (a == 0) {
    store_bits(dst, sign | kExponent);
    _ErrorCall(arrays, LUX_POLE, i, status);
  } else if (a <= kFraction) {
    const float doubled = store_f32(float(int32_t(2 * a)));
    const float root = normal(load_bits(&doubled) | sign);
    *dst = store_f32(root * 0x1p50f);
  } else {
    *dst = normal(x);
  }
}

static Status table_driven(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, 4>(
      arrays, len,
      [=](int32_t i, int32_t last) { return cbrt_blocks(static_const_table, src, dst, i, last); },
      [&](int32_t i, Status* status) {
        inverse_cube_root(arrays, i, status,
                          [](uint32_t x) { return cbrt_normal(static_const_table, x); });
      });
}

template <bool kRefined>
static inline Status packed(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<SseNearest, 4>(
      arrays, len,
      [=](int32_t i, int32_t last) { return packed_blocks<kRefined>(src, dst, i, last); },
      [&](int32_t i, Status* status) {
        inverse_cube_root(arrays, i, status, packed_normal<kRefined>);
      });
}

LUX_KERNEL(InvCbrt, 32f, A24, 1_1) { return table_driven(src, dst, len); }
LUX_KERNEL(InvCbrt, 32f, A21, 1_1) { return packed<true>(src, dst, len); }
LUX_KERNEL(InvCbrt, 32f, A11, 1_1) { return packed<false>(src, dst, len); }
