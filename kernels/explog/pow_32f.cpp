// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays, an exponent for each element.
#include "kernels/explog/pow_32f.h"

LUX_KERNEL(Pow, 32f, A24, 2_1) {
  return pow_x87<&WideLibrary::Pow_32f_A24>({src1, src2, dst, dst}, EachExponent<float>{src2}, len);
}
LUX_KERNEL(Pow, 32f, A21, 2_1) {
  return pow_packed<A21, &WideLibrary::Pow_32f_A21>({src1, src2, dst, dst},
                                                    EachExponent<float>{src2}, len);
}
LUX_KERNEL(Pow, 32f, A11, 2_1) {
  return pow_packed<A11, &WideLibrary::Pow_32f_A11>({src1, src2, dst, dst},
                                                    EachExponent<float>{src2}, len);
}
