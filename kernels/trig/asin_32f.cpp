// SPDX-License-Identifier: MIT
//
// Arcsine of single-precision arrays; the reduction is in kernels/trig/arcsine_32f.h. Where the
// argument was folded the result is pi/2 - 2 asin u.
//
// Worst errors (every input): A24 0.5000 ulp, at 0x3F083A1A; A21
// 2^-21.80 of the result, at 0x3F001BBE, where the fold sets in; A11 2^-13.69, at 0x3F000012.
#include "kernels/trig/arcsine_32f.h"

// Constants -0 keep the sign of a zero.
static const Cases kCases = {{1, 0},    {}, {-2, kHalfPi}, {},  //
                             {-1, -0.}, {}, {2, -kHalfPi}, {}};

LUX_DOUBLE_KERNEL(Asin);
static constexpr Listed kListed[] = {{}};

LUX_KERNEL(Asin, 32f, A24, 1_1) {
  return arcsine_a24<kCases, by_double<_noxomp_luxsAsin_64f_A53, kListed>,
                     &WideLibrary::Asin_32f_A24>(src, dst, len);
}
LUX_KERNEL(Asin, 32f, A21, 1_1) {
  return arcsine_packed<kAsin21, combine_asin, &WideLibrary::Asin_32f_A21>(src, dst, len);
}
LUX_KERNEL(Asin, 32f, A11, 1_1) {
  return arcsine_packed<kAsin11, combine_asin, &WideLibrary::Asin_32f_A11>(src, dst, len);
}
