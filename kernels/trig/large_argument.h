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

// The handlers' results for whole blocks of four elements from 2^17 on, from element `i` on: the
// index of the first block that is left, or `last`. At 64-bit precision, to nearest.
int32_t noxd_large_sines(const double* src, double* dst, int32_t i, int32_t last);
int32_t noxd_large_cosines(const double* src, double* dst, int32_t i, int32_t last);
int32_t noxd_large_tangents(const double* src, double* dst, int32_t i, int32_t last);
int32_t noxd_large_sincos(const double* src, double* dst_sin, double* dst_cos, int32_t i,
                          int32_t last);

// The same of singles, of blocks with an element beyond the bound, at any precision.
int32_t noxs_large_sines(const float* src, float* dst, int32_t i, int32_t last, uint32_t bound);
int32_t noxs_large_cosines(const float* src, float* dst, int32_t i, int32_t last, uint32_t bound);
int32_t noxs_large_tangents(const float* src, float* dst, int32_t i, int32_t last, uint32_t bound);
int32_t noxs_large_sincos(const float* src, float* dst_sin, float* dst_cos, int32_t i, int32_t last,
                          uint32_t bound);

// Blocks of either kind, up to the first that is of neither.
template <class Blocks, class Large>
static inline int32_t alternating(int32_t i, int32_t last, const Blocks& blocks,
                                  const Large& large) {
  for (;;) {
    i = blocks(i, last);
    if (i == last) return i;
    const int32_t next = large(i, last);
    if (next == i) return i;
    i = next;
  }
}

#endif
