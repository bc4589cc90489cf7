// SPDX-License-Identifier: MIT
//
// Hyperbolic sine of double-precision arrays; the method is in kernels/hyper/hyperbolic_64f.h.
// Worst errors found (sampled against exact values): A53 0.5005 ulp, at 0x406A03678476EAA3; A50
// 1.8196 ulp, at 0x4032B6284CFE1080.
#include "kernels/hyper/hyperbolic_64f.h"

LUX_KERNEL(Sinh, 64f, A53, 1_1) { return hyperbolic<kSinh, kA53>(src, dst, len); }
LUX_KERNEL(Sinh, 64f, A50, 1_1) { return hyperbolic<kSinh, kA50>(src, dst, len); }
