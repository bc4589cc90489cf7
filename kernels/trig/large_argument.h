// SPDX-License-Identifier: MIT
//
// One element of a trigonometric function, of any size. Kernels hand every element of a block over
// that holds one beyond their own reduction: with its index, the bases of their arrays and the
// address of their status.
//
//   noxsSin_SC_HA(i, src, dst, &status)    and Cos, Tan; LA in place of HA for the lower grades
//   noxsSinCos_SC_HA(i, src, dst_sin, dst_cos, &status)
//   noxdSin_SC_HA ...                      the same of doubles
//
// They may be called under any rounding and precision control, which they leave as it was, with an
// empty x87 stack and MMX state cleared. They never change exception masks.
#ifndef LUX_KERNELS_TRIG_LARGE_ARGUMENT_H
#define LUX_KERNELS_TRIG_LARGE_ARGUMENT_H

#include "luxvmk3.h"  // the handlers are exported

#endif
