// SPDX-License-Identifier: MIT
//
// The thread count of the product's libraries.
#include "luxcore.h"

#include <errno.h>
#include <sched.h>
#include <stdlib.h>
#include <unistd.h>

constexpr int32_t kNotStarted = INT32_MIN;  // no count that a program would choose

LUXCORE_API int32_t threads_omp_of_n_lux = kNotStarted;

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

// The first number of an environment variable, 0 where that is no positive number.
static int32_t number_in(const char* variable) {
  const char* const text = getenv(variable);
  if (!text) return 0;
  char* end;
  errno = 0;
  const long number = strtol(text, &end, 10);
  while (*end == ' ') ++end;
  const bool whole = *end == '\0' || *end == ',';
  return whole && errno == 0 && number > 0 ? int32_t(number) : 0;  // a long has 32 bits
}

// Where the count came from, and what it was.
static const char* source = "nothing: the library has not started";
static int32_t start = kNotStarted;

static int32_t starting_count() {
  constexpr const char* kVariables[] = {"LUXVM_NUM_THREADS", "OMP_NUM_THREADS"};
  for (const char* const variable : kVariables) {
    source = variable;
    if (const int32_t number = number_in(variable)) return number;
  }
  source = "processors";
  return available_processors();
}

// Before main, so that threading works without any call. A program that defines the variable itself
// keeps its value; one that is not position-independent and only mentions it has moved it into
// itself, with the mark.
__attribute__((constructor)) static void start_count() {
  start = starting_count();
  if (threads_omp_of_n_lux == kNotStarted)
    threads_omp_of_n_lux = start;
  else
    start = kNotStarted;
}

LUXCORE_API int32_t luxcoreSetNumThreads(int32_t threads) {
  if (threads < 1) return LUXCORE_BAD_COUNT;
  __atomic_store_n(&threads_omp_of_n_lux, threads, __ATOMIC_RELAXED);
  return LUXCORE_OK;
}

LUXCORE_API int32_t luxcoreGetNumThreads(void) {
  return __atomic_load_n(&threads_omp_of_n_lux, __ATOMIC_RELAXED);
}

LUXCORE_API const char* luxcoreThreadSource(void) {
  return luxcoreGetNumThreads() == start ? source : "program";
}
