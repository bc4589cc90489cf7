// SPDX-License-Identifier: MIT
//
// What stands at the beginning of the wide library's only export, `luxvmk3_wide`, in every build.
#ifndef LUX_CORE_WIDE_HEAD_H
#define LUX_CORE_WIDE_HEAD_H

#include <stdint.h>

// From this length on a call is worth the way to a step; and that of calls that take none.
constexpr int32_t kLeastWideLength = 32, kNeverWide = INT32_MAX;
constexpr int32_t kLeastWideBlock = 8;

struct WideHead {
  // Only where it is that of the main library do the steps give the bits of its kernels, and have the
  // layout that it knows.
  char identity[48];
  // Of calls that take the steps; set by the main library when it takes them in.
  int32_t least_length = kNeverWide;
  const char* (*missing)();  // what the steps need and this machine lacks; null: nothing
  const char* exports;       // the functions with a step, a space behind each name
};

#define LUX_WIDE_LIBRARY_NAME "libluxvmk3-wide.so"

#endif
