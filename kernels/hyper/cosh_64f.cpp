// SPDX-License-Identifier: MIT
//
// Hyperbolic cosine of double-precision arrays; the method is in kernels/hyper/hyperbolic_64f.h.
// Worst errors found (sampled against exact values): A53 0.5037 ulp, at 0xBFF0615413965126; A50
// 0.9162 ulp, at 0x4016288239FC7E46.
#include "kernels/hyper/hyperbolic_64f.h"

LUX_KERNEL(Cosh, 64f, A53, 1_1) { return hyperbolic<kCosh, kA53>(src, dst, len); }
LUX_KERNEL(Cosh, 64f, A50, 1_1) { return hyperbolic<kCosh, kA50>(src, dst, len); }
