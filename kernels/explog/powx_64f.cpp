// SPDX-License-Identifier: MIT
//
// Powers of double-precision arrays, one exponent for all; a few small ones are computed by
// powx_direct.h. Reports get the address of the kernel's own copy of the exponent as the second
// source.
#include "kernels/explog/pow_64f.h"
#include "kernels/explog/powx_direct.h"

struct Special {
  __attribute__((noinline)) void operator()(const Arrays<double>& arrays, int32_t i,
                                            Status* status) const {
    const X87Nearest<X87_EXTENDED> control;
    pow_special(arrays, arrays.src2, i, status, finite_pow);
    control.leave();
  }
};

struct Nearest {
  template <int kTwice>
  using Of = Either<kIsOne<kTwice>, DirectX87<X87_DOUBLE>, DirectX87<X87_EXTENDED>>;
};

LUX_KERNEL(Powx, 64f, A53, 2_1_1) {
  const Arrays<double> arrays = {src, &scalar, dst, dst};
  return powx<Nearest>(arrays, len, Special(),
                       [&](auto y) { return pow_64f<true>(arrays, y, len); });
}
LUX_KERNEL(Powx, 64f, A50, 2_1_1) {
  const Arrays<double> arrays = {src, &scalar, dst, dst};
  return powx<Nearest>(arrays, len, Special(),
                       [&](auto y) { return pow_64f<false>(arrays, y, len); });
}
