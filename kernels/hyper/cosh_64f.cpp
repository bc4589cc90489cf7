// SPDX-License-Identifier: MIT
//
// Hyperbolic cosine of double-precision arrays; the method is in kernels/hyper/hyperbolic_64f.h.
#include "kernels/hyper/hyperbolic_64f.h"

LUX_KERNEL(Cosh, 64f, A53, 1_1) { return hyperbolic<kCosh, kA53>(src, dst, len); }
LUX_KERNEL(Cosh, 64f, A50, 1_1) { return hyperbolic<kCosh, kA50>(src, dst, len); }
