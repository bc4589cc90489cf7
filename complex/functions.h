// SPDX-License-Identifier: MIT
//
// All complex functions of one number.
#ifndef LUX_COMPLEX_FUNCTIONS_H
#define LUX_COMPLEX_FUNCTIONS_H

#include "complex/acos.h"
#include "complex/acosh.h"
#include "complex/asin.h"
#include "complex/asinh.h"
#include "complex/atan.h"
#include "complex/atanh.h"
#include "complex/cos.h"
#include "complex/cosh.h"
#include "complex/exp.h"
#include "complex/ln.h"
#include "complex/log10.h"
#include "complex/pow.h"
#include "complex/sin.h"
#include "complex/sinh.h"
#include "complex/sqrt.h"
#include "complex/tan.h"
#include "complex/tanh.h"

#endif
