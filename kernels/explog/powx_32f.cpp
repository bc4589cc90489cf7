// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays, one exponent for all; a few small ones are computed by
// powx_direct.h. Reports get the address of the kernel's own copy of the exponent as the second
// source.
#include "kernels/explog/pow_32f.h"
#include "kernels/explog/powx_direct.h"

struct Special {
  __attribute__((noinline)) void operator()(const Arrays<float>& arrays, int32_t i,
                                            Status* status) const {
    const X87Nearest<X87_DOUBLE> control;
    Powers<1> alone;
    finite_powers(arrays.src1, OneExponent<float>{arrays.src2}, i, &alone);
    pow_special(arrays, arrays.src2, i, status, KnownPower{alone.nearest[0]});
    control.leave();
  }
};

struct Nearest {
  template <int kTwice>
  using Of = Either<kIsOne<kTwice>, DirectPacked,
                    Either<kTwice == -1, RefinedRoot, DirectX87<X87_EXTENDED>>>;
};

struct Packed {
  template <int>
  using Of = DirectPacked;
};

LUX_KERNEL(Powx, 32f, A24, 2_1_1) {
  const Arrays<float> arrays = {src, &scalar, dst, dst};
  return powx<Nearest>(arrays, len, Special(),
                       [&](auto y) { return pow_x87<&WideLibrary::Powx_32f_A24>(arrays, y, len); });
}
LUX_KERNEL(Powx, 32f, A21, 2_1_1) {
  const Arrays<float> arrays = {src, &scalar, dst, dst};
  return powx<Packed>(arrays, len, Special(), [&](auto y) {
    return pow_packed<A21, &WideLibrary::Powx_32f_A21>(arrays, y, len);
  });
}
LUX_KERNEL(Powx, 32f, A11, 2_1_1) {
  const Arrays<float> arrays = {src, &scalar, dst, dst};
  return powx<Packed>(arrays, len, Special(), [&](auto y) {
    return pow_packed<A11, &WideLibrary::Powx_32f_A11>(arrays, y, len);
  });
}
