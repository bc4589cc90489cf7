// SPDX-License-Identifier: MIT
//
// Hyperbolic sine of double-precision arrays; the method is in kernels/hyper/hyperbolic_64f.h.
// Worst errors found (sampled against exact values): A53 0.5003 ulp, at 0x40741E4E43D5C4EF; A50
// 1.6915 ulp, at 0x400BB20FF594F732.
#include "kernels/hyper/hyperbolic_64f.h"

LUX_KERNEL(Sinh, 64f, A53, 1_1) { return hyperbolic<kSinh, kA53>(src, dst, len); }
LUX_KERNEL(Sinh, 64f, A50, 1_1) { return hyperbolic<kSinh, kA50>(src, dst, len); }
