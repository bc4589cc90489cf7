// SPDX-License-Identifier: MIT
//
// Correctly rounded square roots of one float and one double. The control word is set to the
// result's precision, since a root that was rounded to 64 bits first goes wrong for 2.8e-4 of the
// doubles. Subnormals are ordinary numbers in a register.
#include "core/bits.h"
#include "core/control.h"
#include "luxvmk3_scalar.h"

static inline void hardware_root(long double* x, X87Precision precision) {
  const uint16_t caller = x87_enter(precision);
  asm volatile("fsqrt" : "+t"(*x));
  x87_leave(caller, precision);
}

float noxssqrt_scalar(float x) {
  long double root = x;
  hardware_root(&root, X87_SINGLE);
  return float(root);
}

// A negative number; the root is taken for its invalid flag.
__attribute__((noinline, cold)) static double _noxdSqrt_Spec(double x) {
  static const uint64_t marker = 0x7FF8A5A55A5A5A5Au;  // the NaN of the array function, too
  long double root = x;
  hardware_root(&root, X87_DOUBLE);
  double result;
  store_bits(&result, marker);
  return result;
}

double noxdsqrt_scalar(double x) {
  const uint64_t pattern = load_bits(&x);
  if (pattern - Format<double>::kSign - 1 < Format<double>::kInf) return _noxdSqrt_Spec(x);
  long double root = x;
  hardware_root(&root, X87_DOUBLE);
  return double(root);
}
