// SPDX-License-Identifier: MIT
//
// Compiled as position-independent code, which reaches the variable where the core library has it.
// Other code of a program may get a copy of its own, made before the core library has set it.
#include "catalog/thread_count.h"

#include "luxcore.h"

#include <algorithm>

namespace bench {

int32_t thread_count() {
  return std::max(1, __atomic_load_n(&threads_omp_of_n_lux, __ATOMIC_RELAXED));
}

void set_thread_count(int32_t threads) {
  __atomic_store_n(&threads_omp_of_n_lux, threads, __ATOMIC_RELAXED);
}

}  // namespace bench
