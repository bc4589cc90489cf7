// SPDX-License-Identifier: MIT
//
// Reciprocal cube root of double-precision arrays; the method is in kernels/roots/cbrt_64f.h.
// Worst error found 0.5025 ulp, at 0x3FFF7FFBFAF3958E (sampled against 160 bits).
#include "kernels/roots/cbrt_64f.h"

static Status invcbrt(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return cbrt_64f<true>(arrays, len, [&](int32_t i, uint64_t x, Status* status) {
    const uint64_t sign = x & Format<double>::kSign;
    if (is_zero<double>(x)) {
      store_bits(dst + i, sign | Format<double>::kInf);
      _ErrorCall(arrays, LUX_POLE, i, status);
    } else {
      const bool infinite = magnitude<double>(x) == Format<double>::kInf;
      store_bits(dst + i, infinite ? sign : quieted<double>(x));
    }
  });
}

LUX_KERNELS_64F(InvCbrt, 1_1, invcbrt)
