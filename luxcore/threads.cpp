// SPDX-License-Identifier: MIT
//
// The thread count of the product's libraries.
#include "luxcore.h"

#include <errno.h>
#include <sched.h>
#include <stdlib.h>
#include <unistd.h>

LUXCORE_API int32_t threads_omp_of_n_lux = 1;

// The affinity mask says how many processors this process may use, which can be far fewer than the
// machine has. A mask larger than the buffer is refused with EINVAL, so the buffer grows.
static int32_t available_processors() {
  constexpr int kMostProcessors = 1 << 20;
  for (int processors = 1024; processors <= kMostProcessors; processors *= 4) {
    cpu_set_t* mask = CPU_ALLOC(processors);
    if (!mask) break;
    const size_t size = CPU_ALLOC_SIZE(processors);
    CPU_ZERO_S(size, mask);
    const bool known = sched_getaffinity(0, size, mask) == 0;
    const bool too_small = !known && errno == EINVAL;
    const int count = known ? CPU_COUNT_S(size, mask) : 0;
    CPU_FREE(mask);
    if (known && count > 0) return count;
    if (!too_small) break;
  }
  const long online = sysconf(_SC_NPROCESSORS_ONLN);
  return online > 0 ? int32_t(online) : 1;
}

// This library's own variable, also when a program defines one of that name and so takes its place:
// the program's value is the program's.
extern "C" __attribute__((alias("threads_omp_of_n_lux"), visibility("hidden")))
int32_t own_thread_count;

// Before main, so that threading works without any call.
__attribute__((constructor)) static void start_at_available_processors() {
  own_thread_count = available_processors();
}

LUXCORE_API int32_t luxcoreSetNumThreads(int32_t threads) {
  if (threads < 1) return LUXCORE_BAD_COUNT;
  __atomic_store_n(&threads_omp_of_n_lux, threads, __ATOMIC_RELAXED);
  return LUXCORE_OK;
}

LUXCORE_API int32_t luxcoreGetNumThreads(void) {
  return __atomic_load_n(&threads_omp_of_n_lux, __ATOMIC_RELAXED);
}
