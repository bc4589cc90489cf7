// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays, an exponent for each element.
#include "kernels/explog/pow_32f.h"

static Arrays<float> pow_arrays(const float* src1, const float* src2, float* dst) {
  return {src1, src2, dst, dst};
}

LUX_KERNEL(Pow, 32f, A24, 2_1) {
  return pow_x87(pow_arrays(src1, src2, dst), EachExponent<float>{src2}, len);
}
LUX_KERNEL(Pow, 32f, A21, 2_1) {
  return pow_packed<A21>(pow_arrays(src1, src2, dst), EachExponent<float>{src2}, len);
}
LUX_KERNEL(Pow, 32f, A11, 2_1) {
  return pow_packed<A11>(pow_arrays(src1, src2, dst), EachExponent<float>{src2}, len);
}
