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

LUX_DOUBLE_KERNEL(Acos);
static constexpr Listed kListed[] = {{0x328885A3, 0x3FC90FDB}, {0x39826222, 0x3FC907B5}, {}};

LUX_KERNEL(Acos, 32f, A24, 1_1) {
  return arcsine_a24<kCases, by_double<_noxomp_luxsAcos_64f_A53, kListed>,
                     &WideLibrary::Acos_32f_A24>(src, dst, len);
}
LUX_KERNEL(Acos, 32f, A21, 1_1) {
  return arcsine_packed<kAsin21, combine_acos, &WideLibrary::Acos_32f_A21>(src, dst, len);
}
LUX_KERNEL(Acos, 32f, A11, 1_1) {
  return arcsine_packed<kAsin11, combine_acos, &WideLibrary::Acos_32f_A11>(src, dst, len);
}
