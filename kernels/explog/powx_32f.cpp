// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays, one exponent for all. Reports get the address of the kernel's
// own copy of it as the second source.
#include "kernels/explog/pow_32f.h"

LUX_KERNEL(Powx, 32f, A24, 2_1_1) {
  return pow_x87({src, &scalar, dst, dst}, OneExponent<float>{&scalar}, len);
}
LUX_KERNEL(Powx, 32f, A21, 2_1_1) {
  return pow_packed<A21>({src, &scalar, dst, dst}, OneExponent<float>{&scalar}, len);
}
LUX_KERNEL(Powx, 32f, A11, 2_1_1) {
  return pow_packed<A11>({src, &scalar, dst, dst}, OneExponent<float>{&scalar}, len);
}
