// SPDX-License-Identifier: MIT
//
// Square root of double-precision arrays. Blocks of four positive normal numbers; a block with
// anything else goes one by one, and so do its ordinary elements, by the same steps.
//
//   zeros, +infinity  themselves          negative  marker NaN, reported
//   NaN               itself, quiet       subnormal  2^-498 times the root of 2^996 x
//
// Worst error found 0.7034 ulp, at 0x400000000D12EBAF (sampled).
#include "kernels/roots/root_64f.h"

static void _noxdSqrtScalar(const Arrays<double>& arrays, int32_t i, Status* status) {
  const uint64_t x = load_bits(arrays.src1 + i);
  if (is_zero<double>(x) || x == Format<double>::kInf)
    store_bits(arrays.dst1 + i, x);
  else
    root_special<kRoot>(arrays, i, x, status);
}

static Status sqrt_64f(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      arrays, len, [=](int32_t i, int32_t last) { return root_blocks<kRoot>(src, dst, i, last); },
      [&](int32_t i, Status* status) { _noxdSqrtScalar(arrays, i, status); });
}

LUX_KERNELS_64F(Sqrt, 1_1, sqrt_64f)
