// SPDX-License-Identifier: MIT
//
// erf of single-precision arrays, as x times a polynomial for erf(a)/a, a = |x|, chosen by cell.
//
//   A24        k = round(128 a), cubics in a itself on the x87 unit at 53-bit precision
//   A21, A11   k = round(32 a), r = a - k/32 exactly; packed cubics in r, or their two lowest
//              terms
//
// Magnitudes from 4 on are taken for 4: erf rounds to 1 from 3.9192 on. The sign comes with the
// last factor, which is subnormal itself where the result is: that is rounded once. Packed
// arguments below 2^-126, zeros among them, are computed as under A24, so that nothing depends on
// how the processor treats subnormal operands.
//
// The double cubics are off by at most 2^-38.3 of the result, the 53-bit steps by 2^-50. Next to 0
// their constant counts alone, a rounded 2/sqrt(pi), so that subnormal results are nearest, too.
//
// Worst errors (every positive input to 4.5): A24 0.5000 ulp, at 0x3940EAD6; A21
// 2^-22.47 of the result, at 0x3EF776D2; A11 2^-13.58, at 0x3C7FFFE1.
#include "kernels/erf/erf_32f_step.h"
#include "kernels/nearest_32f.h"
#include "kernels/screens.h"

constexpr uint32_t kMargin = 0x7000;  // 2^-38.2

// By selection: a minimum may take subnormals for zeros.
static inline __m128 saturated(__m128 a) {
  const __m128 bound = all_lanes(kSaturated);
  return select(_mm_cmplt_ps(a, bound), a, bound);
}

LUX_DOUBLE_KERNEL(Erf);
static constexpr Listed kListed[] = {{}};

template <int kCount>
static inline void extended_block(const float* src, float* dst) {
  alignas(16) float signed_a[4], a[4], shifted[4];
  double y[kCount];
  const __m128 x = load_elements<kCount>(src), u = saturated(magnitude_of(x));
  _mm_store_ps(a, u);
  _mm_store_ps(signed_a, _mm_or_ps(u, sign_of(x)));
  _mm_store_ps(shifted, shifted_to_grid<128>(u));
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i) {
    const Cubic& c = kCubic[Grid<128>::index(shifted + i)];
    const long double result = (((c.c3 * a[i] + c.c2) * a[i] + c.c1) * a[i] + c.c0) * signed_a[i];
    put_copy(y + i, result);
    put(dst + i, result);
  }
  if (any_undecided<kMargin>(y))
    settle<kMargin, by_double<_noxomp_luxsErf_64f_A53, kListed>>(y, signed_a, dst);
}

// in_blocks(x): whether four elements are for `block`; element(x, y): one that is no NaN.
template <Unit kUnit, auto kStep, class InBlocks, class Block, class Element>
static inline Status erf_32f(const float* src, float* dst, int32_t len, InBlocks in_blocks,
                             Block block, Element element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<BothNearest<X87_DOUBLE>, 4>(arrays, len,
                                                with_wide_step<kUnit, kStep, kUnit != Unit::kSse>(
                                                    arrays, len,
                                                    [=](int32_t i, int32_t last) {
                                                      for (; i < last && in_blocks(src + i); i += 4)
                                                        block(src + i, dst + i);
                                                      return i;
                                                    }),
                                                [=](int32_t i, Status*) {
                                                  const uint32_t x = load_bits(src + i);
                                                  if (magnitude<float>(x) < kNaNs)
                                                    element(src + i, dst + i);
                                                  else
                                                    store_bits(dst + i, quieted<float>(x));
                                                });
}

// Infinities are computed in blocks too.
static inline bool is_packed(const float* x) {
  return upper_magnitude(x) - Format<float>::kSmallestNormal <
         kNaNs - Format<float>::kSmallestNormal;
}

static inline bool all_packed(const float* x) {
  return is_packed(x) & is_packed(x + 1) & is_packed(x + 2) & is_packed(x + 3);
}

template <int kTerms, auto kStep>
static inline Status packed_erf(const float* src, float* dst, int32_t len) {
  return erf_32f<Unit::kSse, kStep>(
      src, dst, len, all_packed, [](const float* x, float* y) { packed_block<kTerms, 4>(x, y); },
      [](const float* x, float* y) {
        if (is_packed(x))
          packed_block<kTerms, 1>(x, y);
        else
          extended_block<1>(x, y);
      });
}

LUX_KERNEL(Erf, 32f, A24, 1_1) {
  return erf_32f<Unit::kBoth, &WideLibrary::Erf_32f_A24>(
      src, dst, len, [](const float* x) { return all_below<4>(x, kNaNs); },
      [](const float* x, float* y) { extended_block<4>(x, y); },
      [](const float* x, float* y) { extended_block<1>(x, y); });
}

LUX_KERNEL(Erf, 32f, A21, 1_1) { return packed_erf<4, &WideLibrary::Erf_32f_A21>(src, dst, len); }
LUX_KERNEL(Erf, 32f, A11, 1_1) { return packed_erf<2, &WideLibrary::Erf_32f_A11>(src, dst, len); }
