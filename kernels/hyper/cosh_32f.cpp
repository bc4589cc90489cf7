// SPDX-License-Identifier: MIT
//
// Hyperbolic cosine of single-precision arrays; the method is in kernels/hyper/hyperbolic_32f.h.
// Worst errors (every input from 2^-13 on): A24 0.5000 ulp, at 0x3A6F7750; A21 2^-23.01 of the
// result, at 0x4220D431; A11 2^-12.98, at 0x424D3000.
#include "kernels/hyper/hyperbolic_32f.h"

LUX_DOUBLE_KERNEL(Cosh);
static constexpr Listed kListed[] = {{}};

LUX_KERNEL(Cosh, 32f, A24, 1_1) {
  return hyperbolic_a24<kCosh, by_double<_noxomp_luxsCosh_64f_A53, kListed>,
                        &WideLibrary::Cosh_32f_A24>(src, dst, len);
}
LUX_KERNEL(Cosh, 32f, A21, 1_1) {
  return hyperbolic_packed<kCosh, kA21, &WideLibrary::Cosh_32f_A21>(src, dst, len);
}
LUX_KERNEL(Cosh, 32f, A11, 1_1) {
  return hyperbolic_packed<kCosh, kA11, &WideLibrary::Cosh_32f_A11>(src, dst, len);
}
