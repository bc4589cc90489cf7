// SPDX-License-Identifier: MIT
//
// Powers of double-precision arrays, an exponent for each element.
#include "kernels/explog/pow_64f.h"

LUX_KERNEL(Pow, 64f, A53, 2_1) {
  return pow_64f<true>({src1, src2, dst, dst}, EachExponent<double>{src2}, len);
}
LUX_KERNEL(Pow, 64f, A50, 2_1) {
  return pow_64f<false>({src1, src2, dst, dst}, EachExponent<double>{src2}, len);
}
