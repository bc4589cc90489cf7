// SPDX-License-Identifier: MIT
//
// Loops over functions of whole vector registers: one source, compiled for each size of register.
#ifndef LUX_BENCH_SLEEF_LOOPS_H
#define LUX_BENCH_SLEEF_LOOPS_H

#include <stdint.h>

namespace bench {

using SleefLoop = void(const void* const source[2], void* const destination[2], int32_t len,
                       int32_t times, void* called);

struct SleefLoops {
  SleefLoop *single_loop, *double_loop;
};

struct SleefSet {
  SleefLoops unary, binary, scalar_second, two_results, two_results_swapped;
};

extern const SleefSet kSleefSse2, kSleefAvx2, kSleefAvx512;

}  // namespace bench

#endif
