// SPDX-License-Identifier: MIT
//
// Arccosine of single-precision arrays; the reduction is in kernels/trig/arcsine_32f.h.
//
//   |x| <= 1/2   pi/2 - asin x
//   x > 1/2      2 asin u
//   x < -1/2     pi - 2 asin u
//
// Worst errors (every input): A24 0.5000 ulp, at 0x39826222; A21
// 2^-22.73 of the result, at 0xBF0039B2; A11 2^-14.69, at 0x3F212785.
#include "kernels/trig/arcsine_32f.h"

static const Cases kCases = {{-1, kHalfPi}, {}, {2, 0},    {},  //
                             {1, kHalfPi},  {}, {-2, kPi}, {}};

static inline __m128 combine(__m128 x, const Folded& f, __m128 y, bool) {
  const __m128 sign = sign_of(x);
  const __m128 constant =
      select(f.mask, _mm_and_ps(_mm_cmplt_ps(x, _mm_setzero_ps()), all_lanes(kSinglePi)),
             all_lanes(float(kHalfPi)));
  const __m128 y1 = select(f.mask, y + y, _mm_xor_ps(y, all_lanes(Format<float>::kSign)));
  return constant + _mm_xor_ps(y1, sign);
}

LUX_DOUBLE_KERNEL(Acos);
static constexpr Listed kListed[] = {{0x328885A3, 0x3FC90FDB}, {0x39826222, 0x3FC907B5}, {}};

LUX_KERNEL(Acos, 32f, A24, 1_1) {
  return arcsine_a24<kCases, by_double<_noxomp_luxsAcos_64f_A53, kListed>>(src, dst, len);
}
LUX_KERNEL(Acos, 32f, A21, 1_1) { return arcsine_packed<kAsin21, combine>(src, dst, len); }
LUX_KERNEL(Acos, 32f, A11, 1_1) { return arcsine_packed<kAsin11, combine>(src, dst, len); }
