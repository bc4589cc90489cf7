// SPDX-License-Identifier: MIT
//
// One call cut into slices that run in the threads of an OpenMP region, for every element type and
// argument shape.
#include <omp.h>

#include "core/control.h"
#include "core/shapes.h"
#include "core/team.h"

// The control words and flags of a call belong to its thread; its slices are to compute and trap as
// if they ran there.
struct CallersControl {
  uint16_t x87 = x87_control();
  uint32_t sse = sse_control();
  uint32_t x87_raised = 0, sse_raised = 0;  // by slices in other threads

  void raise_what_others_raised() const {
    if (sse_raised) sse_load(sse_control() | sse_raised);
    if (x87_raised) x87_raise(uint16_t(x87_raised));
  }
};

// While it lives, a thread of the runtime's computes under the caller's control words. The thread's
// own come back, with its own flags.
class Visit {
 public:
  Visit(CallersControl& caller, bool elsewhere) : caller_(caller), elsewhere_(elsewhere) {
    if (!elsewhere_) return;
    own_x87_ = x87_take_environment();
    own_sse_ = sse_control();
    x87_load(caller.x87);
    sse_load(caller.sse & ~kSseFlags);
  }
  ~Visit() {
    if (!elsewhere_) return;
    __atomic_or_fetch(&caller_.x87_raised, x87_flags(), __ATOMIC_RELAXED);
    __atomic_or_fetch(&caller_.sse_raised, sse_control() & kSseFlags, __ATOMIC_RELAXED);
    x87_put_environment(own_x87_);
    sse_load(own_sse_);
  }

 private:
  CallersControl& caller_;
  const bool elsewhere_;
  X87Environment own_x87_;
  uint32_t own_sse_;
};

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

  Team team(threads);
  if (team.size() == 1) {
    for (int32_t i = 0; i < threads; ++i) run(i);
    return merged;
  }
  CallersControl caller;
#pragma omp parallel num_threads(team.size())
  {
    const Visit visit(caller, omp_get_thread_num() != 0);
#pragma omp for schedule(static) nowait
    for (int32_t i = 0; i < threads; ++i) {
      const int64_t started = nox_clock();
      run(i);
      team.count(nox_clock() - started);
    }
  }
  team.judge();
  caller.raise_what_others_raised();
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
