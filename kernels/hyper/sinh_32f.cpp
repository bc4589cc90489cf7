// SPDX-License-Identifier: MIT
//
// Hyperbolic sine of single-precision arrays; the method is in kernels/hyper/hyperbolic_32f.h.
#include "kernels/hyper/hyperbolic_32f.h"

LUX_KERNEL(Sinh, 32f, A24, 1_1) { return hyperbolic_a24<kSinh>(src, dst, len); }
LUX_KERNEL(Sinh, 32f, A21, 1_1) { return hyperbolic_packed<kSinh, kA21>(src, dst, len); }
LUX_KERNEL(Sinh, 32f, A11, 1_1) { return hyperbolic_packed<kSinh, kA11>(src, dst, len); }
