// SPDX-License-Identifier: MIT
#include "core/team.h"

#include <omp.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "luxcore.h"

static int64_t monotonic_clock() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t(now.tv_sec) * 1000000000 + now.tv_nsec;
}

int64_t (*nox_clock)() = monotonic_clock;

// ---- Forks

// The runtime's threads do not survive a fork, whoever had started them, and a region in the child
// would wait for them for ever.
static bool in_forked_child = false;

static void note_child() { in_forked_child = true; }  // not counted: gcov shows no fork handlers

__attribute__((constructor)) static void watch_forks() {
  if (pthread_atfork(nullptr, nullptr, note_child) != 0) note_child();
}

// ---- Threads that can be had

// The runtime ends the process when it cannot start a thread. So before it is asked for more
// threads than it has started for the calling thread, as many are started and joined here, of the
// same stack size and on the same processors.

// OMP_STACKSIZE as the runtime reads it: kilobytes, or with a unit. 0 when it is not set.
static size_t stack_size(const char* variable) {
  const char* text = getenv(variable);
  if (!text) return 0;
  char* end;
  const unsigned long number = strtoul(text, &end, 10);
  if (end == text) return 0;
  while (*end == ' ') ++end;
  int shift = 10;
  switch (*end | 0x20) {
    case 'b':
      shift = 0;
      break;
    case 'm':
      shift = 20;
      break;
    case 'g':
      shift = 30;
      break;
  }
  return shift && number > SIZE_MAX >> shift ? SIZE_MAX : size_t(number) << shift;
}

// Processors of one of the places that the runtime binds its threads to.
static bool bind_to_place(pthread_attr_t* attributes, int place) {
  cpu_set_t processors;
  CPU_ZERO(&processors);
  int ids[CPU_SETSIZE];
  const int count = omp_get_place_num_procs(place);
  if (count < 1 || count > CPU_SETSIZE) return false;
  omp_get_place_proc_ids(place, ids);
  for (int i = 0; i < count; ++i)
    if (ids[i] >= 0 && ids[i] < CPU_SETSIZE) CPU_SET(ids[i], &processors);
  return pthread_attr_setaffinity_np(attributes, sizeof processors, &processors) == 0;
}

static void* pass(void* gate) {
  pthread_mutex_lock(static_cast<pthread_mutex_t*>(gate));
  pthread_mutex_unlock(static_cast<pthread_mutex_t*>(gate));
  return nullptr;
}

// All of them at once. They take no signal that is meant for the program's threads, and a calling
// thread that was cancelled ends behind the call: joining would let it end here.
static bool can_start(int32_t threads) {
  pthread_t* const started = static_cast<pthread_t*>(malloc(threads * sizeof(pthread_t)));
  if (!started) return false;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  size_t size = stack_size("OMP_STACKSIZE");
  if (!size) size = stack_size("GOMP_STACKSIZE");
  if (size) pthread_attr_setstacksize(&attributes, size);
  const int places = omp_get_num_places();

  int cancelling;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelling);
  sigset_t all, signals;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &signals);
  pthread_mutex_t gate = PTHREAD_MUTEX_INITIALIZER;
  pthread_mutex_lock(&gate);
  int32_t count = 0;
  while (count < threads && (places < 1 || bind_to_place(&attributes, count % places)) &&
         pthread_create(&started[count], &attributes, pass, &gate) == 0)
    ++count;
  pthread_mutex_unlock(&gate);
  for (int32_t i = 0; i < count; ++i) pthread_join(started[i], nullptr);
  pthread_sigmask(SIG_SETMASK, &signals, nullptr);
  pthread_setcancelstate(cancelling, nullptr);

  pthread_attr_destroy(&attributes);
  free(started);
  return count == threads;
}

// ---- Threads that pay

// On processors that other programs keep busy, the slices of a team wait for one another longer
// than they compute. The runtime cannot tell before, so an account is kept of what regions gained
// and lost against one thread. A loss beyond what was gained lately bars the threads for 32 times
// as long, at most 250 ms: little of the time is lost, and little is missed when the processors
// are free again.
constexpr int64_t kPatience = 32, kLongestPause = 250000000, kMostCredit = 8000000;
constexpr int64_t kLeastWork = 2000;  // less cannot be told from the clock's own time
static int64_t credit = 0, pause_end = 0;

static bool pausing() {
  const int64_t end = __atomic_load_n(&pause_end, __ATOMIC_RELAXED);
  return end != 0 && nox_clock() < end;
}

// ---- The team

// The runtime keeps the threads of the last region that this thread opened, and lets those go that
// the next one does not need. The number stands where the runtime's own variables of a thread do, so
// that reading it takes no call of the loader.
__attribute__((tls_model("initial-exec"))) static __thread int32_t pool_size = 1;
static bool refused = false;

// Inside a region of the program's, the runtime starts threads anew each time, if it may.
static bool starts_threads(int32_t wanted) { return omp_in_parallel() || wanted > pool_size; }
static bool may_open_region() {
  return !omp_in_parallel() || omp_get_active_level() < omp_get_max_active_levels();
}

// More threads than that would only take address space.
static int32_t at_most_useful(int32_t threads) {
  constexpr int32_t kAlwaysFit = 64;
  if (threads <= kAlwaysFit) return threads;  // without asking for the processors, a system call
  const int32_t processors = omp_get_num_procs();
  const int32_t most = processors > kAlwaysFit ? processors : kAlwaysFit;
  return threads < most ? threads : most;
}

Team::Team(int32_t slices) : slices_(slices), size_(1) {
  const int32_t threads = __atomic_load_n(&threads_omp_of_n_lux, __ATOMIC_RELAXED);
  const int32_t wanted = at_most_useful(threads < slices ? threads : slices);
  if (wanted <= 1 || in_forked_child || __atomic_load_n(&refused, __ATOMIC_RELAXED)) return;
  if (!may_open_region() || pausing()) return;
  starts_threads_ = starts_threads(wanted);
  if (starts_threads_ && !can_start(wanted - 1)) {
    __atomic_store_n(&refused, true, __ATOMIC_RELAXED);
    return;
  }
  if (!omp_in_parallel()) pool_size = wanted;
  size_ = wanted;
  started_ = nox_clock();
}

void Team::count(int64_t nanoseconds) {
  const uint32_t mine = nanoseconds < UINT32_MAX ? uint32_t(nanoseconds) : UINT32_MAX;
  uint32_t fastest = __atomic_load_n(&fastest_, __ATOMIC_RELAXED);
  while (mine < fastest && !__atomic_compare_exchange_n(&fastest_, &fastest, mine, true,
                                                        __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
  }
}

void Team::judge() const {
  if (starts_threads_ || fastest_ == UINT32_MAX) return;
  const int64_t alone = int64_t(fastest_) * slices_, now = nox_clock();
  if (alone < kLeastWork) return;
  const int64_t gained = alone - (now - started_);
  const int64_t sum = __atomic_load_n(&credit, __ATOMIC_RELAXED) + gained;
  if (sum < 0) {
    const int64_t pause = -sum < kLongestPause / kPatience ? -sum * kPatience : kLongestPause;
    __atomic_store_n(&pause_end, now + pause, __ATOMIC_RELAXED);
  }
  const int64_t left = sum < 0 ? 0 : sum < kMostCredit ? sum : kMostCredit;
  __atomic_store_n(&credit, left, __ATOMIC_RELAXED);
}
