// SPDX-License-Identifier: MIT
//
// The array functions, both types and all grades.
#include "complex/frame.h"
#include "complex/functions.h"
#include "complex/hyperbolic_passes.h"
#include "complex/inverse_passes.h"
#include "complex/logarithm_passes.h"
#include "complex/packed_inverse.h"
#include "complex/packed_power.h"

LUX_COMPLEX_BEST(Sqrt, sqrt)
LUX_COMPLEX_PACKED(Sqrt, PackedSqrt)
LUX_COMPLEX_POWERS(Pow, 2_1, src1, src2, 1)
LUX_COMPLEX_POWERS(Powx, 2_1_1, src, &scalar, 0)
LUX_COMPLEX_PASSES(Exp, ExpSteps)
LUX_COMPLEX_PACKED(Exp, PackedExp)
LUX_COMPLEX_PASSES(Ln, LnSteps)
LUX_COMPLEX_PACKED(Ln, PackedLn)
LUX_COMPLEX_PASSES(Log10, Log10Steps)
LUX_COMPLEX_PACKED(Log10, PackedLog10)
LUX_COMPLEX_PASSES(Cos, CosSteps)
LUX_COMPLEX_PACKED(Cos, PackedHyperbolicSteps<CosSteps>)
LUX_COMPLEX_PASSES(Sin, SinSteps)
LUX_COMPLEX_PACKED(Sin, PackedHyperbolicSteps<SinSteps>)
LUX_COMPLEX_PASSES(Tan, TanSteps)
LUX_COMPLEX_PACKED(Tan, PackedTangentSteps<TanSteps>)
LUX_COMPLEX_PASSES(Acos, AcosSteps)
LUX_COMPLEX_PACKED(Acos, PackedAcos)
LUX_COMPLEX_PASSES(Asin, AsinSteps)
LUX_COMPLEX_PACKED(Asin, PackedAsin)
LUX_COMPLEX_PASSES(Atan, AtanSteps)
LUX_COMPLEX_PACKED(Atan, PackedAtan)
LUX_COMPLEX_PASSES(Cosh, CoshSteps)
LUX_COMPLEX_PACKED(Cosh, PackedHyperbolicSteps<CoshSteps>)
LUX_COMPLEX_PASSES(Sinh, SinhSteps)
LUX_COMPLEX_PACKED(Sinh, PackedHyperbolicSteps<SinhSteps>)
LUX_COMPLEX_PASSES(Tanh, TanhSteps)
LUX_COMPLEX_PACKED(Tanh, PackedTangentSteps<TanhSteps>)
LUX_COMPLEX_PASSES(Acosh, AcoshSteps)
LUX_COMPLEX_PACKED(Acosh, PackedAcosh)
LUX_COMPLEX_PASSES(Asinh, AsinhSteps)
LUX_COMPLEX_PACKED(Asinh, PackedAsinh)
LUX_COMPLEX_PASSES(Atanh, AtanhSteps)
LUX_COMPLEX_PACKED(Atanh, PackedAtanh)
