// SPDX-License-Identifier: MIT
//
// One call cut into slices that run in the threads of an OpenMP region, for every element type and
// argument shape.
#include <omp.h>
#include <unistd.h>

#include "core/shapes.h"

// The GNU runtime ends a 32-bit process that asks for more threads than its address space holds.
// A team smaller than the number of slices computes several slices a thread.
static int32_t team_size(int32_t threads) {
  constexpr int32_t kAlwaysFit = 64;
  if (threads <= kAlwaysFit) return threads;  // without the system call
  const int32_t processors = omp_get_num_procs();
  const int32_t most = processors > kAlwaysFit ? processors : kAlwaysFit;
  return threads < most ? threads : most;
}

// The runtime's threads do not survive a fork, and a region in the child would wait for them for
// ever. So the process that first starts a region keeps that right; its children run the slices
// themselves.
static bool may_start_threads() {
  static pid_t owner = 0;
  const pid_t self = getpid();
  pid_t first = 0;
  return __atomic_compare_exchange_n(&owner, &first, self, false, __ATOMIC_RELAXED,
                                     __ATOMIC_RELAXED) ||
         first == self;
}

template <class Slice>
static Status run_slices(int32_t threads, int32_t len, Slice slice) {
  if (threads <= 1 || len / threads < 4) return slice(0, len);  // one slice needs no region

  // Every slice but the last is whole blocks of the kernels' main loops.
  const int32_t chunk = len / threads & ~3;
  Status merged = 0;
  const auto run = [&](int32_t i) {
    const int32_t first = i * chunk;
    const Status status = slice(first, i == threads - 1 ? len - first : chunk);
    if (status != 0) __atomic_store_n(&merged, status, __ATOMIC_RELAXED);
  };

  if (may_start_threads()) {
#pragma omp parallel for schedule(static) num_threads(team_size(threads))
    for (int32_t i = 0; i < threads; ++i) run(i);
  } else {
    for (int32_t i = 0; i < threads; ++i) run(i);
  }
  return __atomic_load_n(&merged, __ATOMIC_RELAXED);
}

#define ANY_NULL_1_1 !src || !dst
#define ANY_NULL_2_1 !src1 || !src2 || !dst
#define ANY_NULL_1_2 !src || !dst1 || !dst2
#define ANY_NULL_2_1_1 !src || !dst

#define FROM_1_1(first) src + first, dst + first
#define FROM_2_1(first) src1 + first, src2 + first, dst + first
#define FROM_1_2(first) src + first, dst1 + first, dst2 + first
#define FROM_2_1_1(first) src + first, scalar, dst + first

#define SPLITTER(t, type, shape)                                                          \
  Status nox##t##Threading_##shape(LuxKernel_##type##_##shape kernel, int32_t threads,    \
                                   LUX_PARAMS_##shape(LUX_ELEMENT_##type), int32_t len) { \
    if (ANY_NULL_##shape) return LUX_NULL_POINTER;                                        \
    return run_slices(threads, len, [=](int32_t first, int32_t count) {                   \
      return kernel(FROM_##shape(first), count);                                          \
    });                                                                                   \
  }

#define SPLITTERS(t, type) \
  SPLITTER(t, type, 1_1)   \
  SPLITTER(t, type, 2_1)   \
  SPLITTER(t, type, 1_2)   \
  SPLITTER(t, type, 2_1_1)

SPLITTERS(s, 32f)
SPLITTERS(d, 64f)
SPLITTERS(c, 32fc)
SPLITTERS(z, 64fc)
