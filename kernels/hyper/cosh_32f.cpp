// SPDX-License-Identifier: MIT
//
// Hyperbolic cosine of single-precision arrays; the method is in kernels/hyper/hyperbolic_32f.h.
#include "kernels/hyper/hyperbolic_32f.h"

LUX_KERNEL(Cosh, 32f, A24, 1_1) { return hyperbolic_a24<kCosh>(src, dst, len); }
LUX_KERNEL(Cosh, 32f, A21, 1_1) { return hyperbolic_packed<kCosh, kA21>(src, dst, len); }
LUX_KERNEL(Cosh, 32f, A11, 1_1) { return hyperbolic_packed<kCosh, kA11>(src, dst, len); }
