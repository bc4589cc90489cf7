// SPDX-License-Identifier: MIT
//
// Powers of double-precision arrays, one exponent for all. Reports get the address of the kernel's
// own copy of it as the second source.
#include "kernels/explog/pow_64f.h"

LUX_KERNEL(Powx, 64f, A53, 2_1_1) {
  return pow_64f<true>({src, &scalar, dst, dst}, OneExponent<double>{&scalar}, len);
}
LUX_KERNEL(Powx, 64f, A50, 2_1_1) {
  return pow_64f<false>({src, &scalar, dst, dst}, OneExponent<double>{&scalar}, len);
}
