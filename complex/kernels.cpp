// SPDX-License-Identifier: MIT
//
// The array functions, both types and all grades.
#include "complex/frame.h"
#include "complex/functions.h"

LUX_COMPLEX_KERNELS(Sqrt, 1_1, sqrt)
LUX_COMPLEX_KERNELS(Pow, 2_1, pow)
LUX_COMPLEX_KERNELS(Powx, 2_1_1, pow)
LUX_COMPLEX_KERNELS(Exp, 1_1, exp)
LUX_COMPLEX_KERNELS(Ln, 1_1, log)
LUX_COMPLEX_KERNELS(Log10, 1_1, log10)
LUX_COMPLEX_KERNELS(Cos, 1_1, cos)
LUX_COMPLEX_KERNELS(Sin, 1_1, sin)
LUX_COMPLEX_KERNELS(Tan, 1_1, tan)
LUX_COMPLEX_KERNELS(Acos, 1_1, acos)
LUX_COMPLEX_KERNELS(Asin, 1_1, asin)
LUX_COMPLEX_KERNELS(Atan, 1_1, atan)
LUX_COMPLEX_KERNELS(Cosh, 1_1, cosh)
LUX_COMPLEX_KERNELS(Sinh, 1_1, sinh)
LUX_COMPLEX_KERNELS(Tanh, 1_1, tanh)
LUX_COMPLEX_KERNELS(Acosh, 1_1, acosh)
LUX_COMPLEX_KERNELS(Asinh, 1_1, asinh)
LUX_COMPLEX_KERNELS(Atanh, 1_1, atanh)
