// SPDX-License-Identifier: MIT
//
// What every complex kernel shares: argument checks, the control word, the loop, and the passage of
// single-precision elements through the double-precision routines.
//
// The routine of an element takes one complex number and gives one. Nothing is reported; the status of
// valid arguments is 0.
#ifndef LUX_COMPLEX_FRAME_H
#define LUX_COMPLEX_FRAME_H

#include "complex/number.h"
#include "kernels/frame.h"

template <class E, class Routine>
static inline Status run_complex(const E* src, E* dst, int32_t len, Routine routine) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !dst) return LUX_NULL_POINTER;
  const X87Nearest<X87_EXTENDED> control;
  for (int32_t i = 0; i < len; ++i) in_memory(dst + i) = routine(in_memory(src + i));
  control.leave();
  return LUX_OK;
}

// Kept in memory as it was stored: put together again from halves, it would stall its load.
static inline Complex64 widened(Complex32 z) {
  Complex64 wide = {z.re, z.im};
  asm("" : "+m"(wide));
  return wide;
}

static inline bool is_subnormal(float x) {
  return magnitude<float>(load_bits(&x)) - 1 < 0x007FFFFF;
}

// Rounds a result to singles. A subnormal part raises the underflow flag of the x87 unit, which is
// all that tells of it; the stored product raises it whether the part was exact or not.
static inline Complex32 narrowed(Complex64 z) {
  const Complex32 result = {store_f32(float(z.re)), store_f32(float(z.im))};
  if (__builtin_expect(is_subnormal(result.re) || is_subnormal(result.im), false)) {
    float smallest_normal = 0x1p-126f;
    asm("" : "+m"(smallest_normal));  // keeps the product from being folded
    store_f32(smallest_normal * smallest_normal);
  }
  return result;
}

// One element after the other. It goes to its routine by reference: a copy made in halves stalls the
// load that follows.
#define LUX_COMPLEX_BEST(family, name)                                                      \
  LUX_KERNEL(family, 64fc, A53, 1_1) {                                                      \
    return run_complex(src, dst, len, [](const auto& z) { return complex_##name(z); });     \
  }                                                                                         \
  LUX_KERNEL_ALIAS(family, 64fc, A50, 1_1, A53)                                             \
  LUX_KERNEL(family, 32fc, A24, 1_1) {                                                      \
    return run_complex(src, dst, len,                                                       \
                       [](const auto& z) { return narrowed(complex_##name(widened(z))); }); \
  }

#endif
