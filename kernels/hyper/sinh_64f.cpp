// SPDX-License-Identifier: MIT
//
// Hyperbolic sine of double-precision arrays; the method is in kernels/hyper/hyperbolic_64f.h.
#include "kernels/hyper/hyperbolic_64f.h"

LUX_KERNEL(Sinh, 64f, A53, 1_1) { return hyperbolic<kSinh, kA53>(src, dst, len); }
LUX_KERNEL(Sinh, 64f, A50, 1_1) { return hyperbolic<kSinh, kA50>(src, dst, len); }
