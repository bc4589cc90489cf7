// SPDX-License-Identifier: MIT
//
// Loops over functions of four singles or two doubles; the only code here that needs SSE2.
#ifndef LUX_BENCH_SLEEF_LOOPS_H
#define LUX_BENCH_SLEEF_LOOPS_H

#include <stdint.h>

namespace bench {

using SleefLoop = void(const void* const source[2], void* const destination[2], int32_t len,
                       int32_t times, void* called);

struct SleefLoops {
  SleefLoop *single_loop, *double_loop;
};

extern const SleefLoops kSleefUnary, kSleefBinary, kSleefScalarSecond, kSleefTwoResults,
    kSleefTwoResultsSwapped;

}  // namespace bench

#endif
