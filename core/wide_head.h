// SPDX-License-Identifier: MIT
//
// What stands at the beginning of the wide library's only export, `luxvmk3_wide`, in every build.
#ifndef LUX_CORE_WIDE_HEAD_H
#define LUX_CORE_WIDE_HEAD_H

#include <stdint.h>

struct WideHead {
  // Only where it is that of the main library do the steps give the bits of its kernels, and have the
  // layout that it knows.
  char identity[48];
  int32_t enabled;  // 1 from when the main library takes the steps in; 0 takes them out again
  const char* (*missing)();  // what the steps need and this machine lacks; null: nothing
  const char* exports;       // the functions with a step, a space behind each name
};

// From this length on a call is worth the way to a step.
constexpr int32_t kLeastWideLength = 32;

#define LUX_WIDE_LIBRARY_NAME "libluxvmk3-wide.so"

#endif
