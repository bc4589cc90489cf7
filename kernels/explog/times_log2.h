// SPDX-License-Identifier: MIT
//
// The processor's logarithm, for the rare arguments of the kernels' own.
#ifndef LUX_KERNELS_EXPLOG_TIMES_LOG2_H
#define LUX_KERNELS_EXPLOG_TIMES_LOG2_H

// factor log2(x)
static inline long double times_log2(long double factor, long double x) {
  long double y;
  asm("fyl2x" : "=t"(y) : "0"(x), "u"(factor) : "st(1)");
  return y;
}

#endif
