// SPDX-License-Identifier: MIT
//
// The graded exports: each decides whether its kernel runs here or is handed to a splitter.
#include "core/shapes.h"
#include "luxcore.h"

using MinN = int32_t (*)(int32_t row, int32_t variant, int32_t threads);

constexpr int32_t kUnknown = -1;
constexpr int64_t kLeastPerThread = 100;
constexpr int32_t kNotStarted = INT32_MIN;  // the count before the core library's constructor

static int32_t thread_count() { return __atomic_load_n(&threads_omp_of_n_lux, __ATOMIC_RELAXED); }

// Threads that race here store the same value. A later change of the thread count does not move it.
// Code that runs before the libraries' constructors fixes nothing: neither they nor the runtime know
// of threads and processors yet.
static int32_t fix_threshold(int32_t* threshold, MinN min_n, int32_t row, int32_t variant,
                             int32_t threads) {
  if (threads == kNotStarted) return INT32_MAX;
  const int32_t elements = min_n(row, variant, threads);
  __atomic_store_n(threshold, elements, __ATOMIC_RELAXED);
  return elements;
}

// A call that is long, or its function's first.
template <auto kMinN, auto kSplitter, class Kernel, class... Arguments>
__attribute__((noinline, cold)) static Status split_or_not(int32_t* threshold, int32_t row,
                                                           int32_t variant, Kernel kernel,
                                                           int32_t len, Arguments... arguments) {
  const int32_t threads = thread_count();
  int32_t elements = __atomic_load_n(threshold, __ATOMIC_RELAXED);
  if (elements == kUnknown) elements = fix_threshold(threshold, kMinN, row, variant, threads);
  if (len > elements && threads >= 1 && len > threads * kLeastPerThread)
    return kSplitter(kernel, threads, arguments..., len);
  return kernel(arguments..., len);
}

// The way to the kernel takes as long as the work on one element, so short calls jump there: the
// kernels are known to be hidden, which takes no register, and everything else is out of line.
#define LUX_GRADED(family, type, grade, t, shape, row, variant)                                    \
  extern "C" __attribute__((visibility("hidden"))) Status _noxomp_luxs##family##_##type##_##grade( \
      LUX_PARAMS_##shape(LUX_ELEMENT_##type), int32_t len);                                        \
  Status luxs##family##_##type##_##grade(LUX_PARAMS_##shape(LUX_ELEMENT_##type), int32_t len) {    \
    static int32_t _nox_min_threads = kUnknown;                                                    \
    const int32_t threshold = __atomic_load_n(&_nox_min_threads, __ATOMIC_RELAXED);                \
    if (threshold == kUnknown || len > threshold)                                                  \
      return split_or_not<nox##t##MinN, nox##t##Threading_##shape>(                                \
          &_nox_min_threads, row, variant, _noxomp_luxs##family##_##type##_##grade, len,           \
          LUX_ARGS_##shape);                                                                       \
    return _noxomp_luxs##family##_##type##_##grade(LUX_ARGS_##shape, len);                         \
  }
#include "core/functions.def"
