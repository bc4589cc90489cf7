// SPDX-License-Identifier: MIT
//
// What the main library and the wide one know of each other. The wide library holds steps for
// processors with AVX2: the same bits as a kernel's `fast` (kernels/frame.h), more elements at once.
#ifndef LUX_CORE_WIDE_H
#define LUX_CORE_WIDE_H

#include "core/shapes.h"
#include "core/wide_head.h"

// The arrays of one call; one source or one destination stands twice.
template <class E>
struct Arrays {
  const E *src1, *src2;
  E *dst1, *dst2;
};

// Computes whole wide blocks from element `first` on and returns the index of the first block that
// holds a special element, or one that it cannot decide, or the end of the last whole block below
// `last`. It stores nothing of the block that it stops at. Flags that its kernel raises on the SSE unit it
// raises there, those of the x87 unit too where the kernel computes on that alone; where the kernel
// computes on both, they are added to *x87_flags.
template <class E>
using WideStep = int32_t (*)(const Arrays<E>& arrays, int32_t first, int32_t last,
                             uint32_t* x87_flags);

struct WideLibrary {
  WideHead head;
  bool takes(int32_t len) const {
    return len >= __atomic_load_n(&head.least_length, __ATOMIC_RELAXED);
  }
#define LUX_WIDE_STEP(step, type, export) WideStep<LUX_ELEMENT_##type> step;
#include "core/wide.def"
};

#endif
