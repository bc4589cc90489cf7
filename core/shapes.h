// SPDX-License-Identifier: MIT
//
// What the words of functions.def stand for in C++: element types, parameter and argument lists.
#ifndef LUX_CORE_SHAPES_H
#define LUX_CORE_SHAPES_H

#include "luxvmk3.h"

#define LUX_ELEMENT_32f float
#define LUX_ELEMENT_64f double
#define LUX_ELEMENT_32fc Lux32fc
#define LUX_ELEMENT_64fc Lux64fc

// Every list ends before the length, which follows as `int32_t len`.
#define LUX_PARAMS_1_1(E) const E *src, E *dst
#define LUX_PARAMS_2_1(E) const E *src1, const E *src2, E *dst
#define LUX_PARAMS_1_2(E) const E *src, E *dst1, E *dst2
#define LUX_PARAMS_2_1_1(E) const E *src, E scalar, E *dst

#define LUX_ARGS_1_1 src, dst
#define LUX_ARGS_2_1 src1, src2, dst
#define LUX_ARGS_1_2 src, dst1, dst2
#define LUX_ARGS_2_1_1 src, scalar, dst

#endif
