// SPDX-License-Identifier: MIT
//
// What the main library and the wide one know of each other. The wide library holds steps for
// processors with AVX2: the same bits as a kernel's `fast` (kernels/frame.h), more elements at once.
#ifndef LUX_CORE_WIDE_H
#define LUX_CORE_WIDE_H

#include "core/shapes.h"

// The arrays of one call; one source or one destination stands twice.
template <class E>
struct Arrays {
  const E *src1, *src2;
  E *dst1, *dst2;
};

// Computes whole wide blocks from element `first` on and returns the index of the first block that
// holds a special element, or one that it cannot decide, or the end of the last whole block below
// `last`. It stores nothing of the block that it stops at.
template <class E>
using WideStep = int32_t (*)(const Arrays<E>& arrays, int32_t first, int32_t last);

constexpr int32_t kLeastWideBlock = 8;

// Its one name is that of the library's only export.
struct WideLibrary {
  // In every build at the beginning. Only where the identity is that of the main library does the
  // rest have this layout, and do the steps give the bits of its kernels.
  char identity[48];
  int32_t enabled;  // 1 from when the main library takes the steps in; the command switches it

  const char* (*missing)();  // what the steps need and this machine lacks; null: nothing
  const char* exports;       // the functions with a step, each name followed by a space
#define LUX_WIDE_STEP(family, type, grade) WideStep<LUX_ELEMENT_##type> family##_##type##_##grade;
#include "core/wide.def"
};

#define LUX_WIDE_LIBRARY_NAME "libluxvmk3-wide.so"

#endif
