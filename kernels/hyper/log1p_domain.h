// SPDX-License-Identifier: MIT
//
// Which arguments of an inverse hyperbolic function are ordinary, for both types.
#ifndef LUX_KERNELS_HYPER_LOG1P_DOMAIN_H
#define LUX_KERNELS_HYPER_LOG1P_DOMAIN_H

#include "kernels/screens.h"

// A family has kBeyond, where its ordinary arguments end, and where they begin: kFirst, or kSigned,
// the sign bit, if the function is odd; all of them upper words. Subnormals are not ordinary then:
// they pass as they are, and storing a subnormal result from the x87 unit takes hundreds of cycles.
// The upper word 0 counts as ordinary, so that zeros stay in the blocks.
template <class Family, int kCount, class E>
static inline bool all_ordinary(const E* x) {
  return none_outside<kCount>([=](int lane) {
    const uint32_t u = upper_word(x + lane) & ~Family::kSigned;
    uint32_t below;
    if constexpr (Family::kSigned != 0)
      below = (u - Upper<E>::kSmallestNormal) & -u;
    else
      below = u - Family::kFirst;
    return below | (Family::kBeyond - 1 - u);
  });
}

#endif
