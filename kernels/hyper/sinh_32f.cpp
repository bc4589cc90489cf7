// SPDX-License-Identifier: MIT
//
// Hyperbolic sine of single-precision arrays; the method is in kernels/hyper/hyperbolic_32f.h.
// Worst errors (every input from 2^-13 on): A24 0.5000 ulp, at 0x3A1285FF; A21 2^-22.18 of the
// result, at 0x3C800D54; A11 2^-12.26, at 0x3C800001, where cell 1 begins.
#include "kernels/hyper/hyperbolic_32f.h"

LUX_DOUBLE_KERNEL(Sinh);
static constexpr Listed kListed[] = {{0x3A1285FF, 0x3A1285FF}, {0xBA1285FF, 0xBA1285FF}, {}};

LUX_KERNEL(Sinh, 32f, A24, 1_1) {
  return hyperbolic_a24<kSinh, by_double<_noxomp_luxsSinh_64f_A53, kListed>,
                        &WideLibrary::Sinh_32f_A24>(src, dst, len);
}
LUX_KERNEL(Sinh, 32f, A21, 1_1) {
  return hyperbolic_packed<kSinh, kA21, &WideLibrary::Sinh_32f_A21>(src, dst, len);
}
LUX_KERNEL(Sinh, 32f, A11, 1_1) {
  return hyperbolic_packed<kSinh, kA11, &WideLibrary::Sinh_32f_A11>(src, dst, len);
}
