// SPDX-License-Identifier: MIT
//
// Reciprocal square root of double-precision arrays. Blocks of four positive normal numbers; a
// block with anything else goes one by one, and so do its ordinary elements, by the same steps.
//
//   zero       infinity of its sign, reported     negative   marker NaN, reported
//   +infinity  +0                                 subnormal  2^498 times the result for 2^996 x
//   NaN        itself, quiet
//
// Worst error found 0.7878 ulp, at 0x3FF000002042F25A (sampled).
#include "kernels/roots/root_64f.h"

static void _noxdInvSqrtScalar(const Arrays<double>& arrays, int32_t i, Status* status) {
  const uint64_t x = load_bits(arrays.src1 + i);
  if (is_zero<double>(x)) {
    store_bits(arrays.dst1 + i, x | Format<double>::kInf);
    _ErrorCall(arrays, LUX_POLE, i, status);
  } else if (x == Format<double>::kInf) {
    store_bits(arrays.dst1 + i, 0);
  } else {
    root_special<kInverseRoot>(arrays, i, x, status);
  }
}

static Status invsqrt_64f(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      arrays, len,
      [=](int32_t i, int32_t last) { return root_blocks<kInverseRoot>(src, dst, i, last); },
      [&](int32_t i, Status* status) { _noxdInvSqrtScalar(arrays, i, status); });
}

LUX_KERNELS_64F(InvSqrt, 1_1, invsqrt_64f)
