// SPDX-License-Identifier: MIT
//
// The library inside programs of every kind, one to a process: guest_test <way>. Exits with 0 when
// all is as it should be. The splitters are called directly, so that calls are split on any
// machine.
#include <omp.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "luxcore.h"
#include "luxvmk3.h"
#include "tests/support.h"

constexpr int kThreads = 4, kLen = 4000;

static int failures = 0;
static void expect(bool condition, const char* what) {
  if (condition) return;
  ++failures;
  fprintf(stderr, "not so: %s\n", what);
}

template <class E>
struct Arrays {
  std::vector<E> src = std::vector<E>(kLen, E(2)), dst = std::vector<E>(kLen);
};

// Inv in kThreads slices; a zero as last element is reported in the last one.
template <class E>
static Status inverses(Arrays<E>& a);
template <>
Status inverses(Arrays<float>& a) {
  return noxsThreading_1_1(luxsInv_32f_A24, kThreads, a.src.data(), a.dst.data(), kLen);
}
template <>
Status inverses(Arrays<double>& a) {
  return noxdThreading_1_1(luxsInv_64f_A53, kThreads, a.src.data(), a.dst.data(), kLen);
}

static bool inverses_are_right() {
  Arrays<float> a;
  a.src.back() = 0;
  if (inverses(a) != LUX_POLE) return false;
  for (int i = 0; i < kLen - 1; ++i)
    if (a.dst[i] != 0.5f) return false;
  return std::isinf(a.dst.back());
}

// ---- Forks

static bool child_succeeds() {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);  // a hanging child ends by this
    _exit(inverses_are_right() ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status == 0;
}

static void fork_after_own_regions() {
  std::atomic<int> threads = 0;
#pragma omp parallel num_threads(3)
  ++threads;
  expect(threads == 3, "the program itself has three threads");
  expect(child_succeeds(), "a child computes");
  expect(inverses_are_right(), "the parent goes on");
}

static void fork_after_split_calls() {
  expect(inverses_are_right(), "the parent computes");
  expect(child_succeeds(), "a child computes");
  expect(inverses_are_right(), "the parent goes on");
}

// ---- Threads that cannot be had

static void limit(__rlimit_resource resource, rlim_t value) {
  const rlimit both = {value, value};
  if (setrlimit(resource, &both) != 0) perror("setrlimit");
}

static void no_address_space() {
  long pages = 0;
  FILE* const statm = fopen("/proc/self/statm", "r");
  expect(statm && fscanf(statm, "%ld", &pages) == 1, "the size of the process is known");
  limit(RLIMIT_AS, rlim_t(pages) * 4096 + (10 << 20));  // a thread's stack has 8 MB
  expect(inverses_are_right(), "right without threads");
}

static void no_processes() {
  if (getuid() == 0 && setuid(65534) != 0) perror("setuid");  // root has no limit
  limit(RLIMIT_NPROC, 0);
  expect(inverses_are_right(), "right without threads");
}

// With GOMP_CPU_AFFINITY naming a processor that is then taken away.
static void no_processor_to_bind_to() {
  cpu_set_t processors;
  sched_getaffinity(0, sizeof processors, &processors);
  for (int k = CPU_SETSIZE; CPU_COUNT(&processors) > 1;) CPU_CLR(--k, &processors);
  sched_setaffinity(0, sizeof processors, &processors);
  expect(inverses_are_right(), "right without threads");
}

// ---- The thread count

// In a program that is not position-independent, the variable is moved into the program.
static void count_is_started() {
  const char* const wanted = getenv("WANTED_COUNT");
  expect(threads_omp_of_n_lux == (wanted ? atoi(wanted) : omp_get_num_procs()), "the count");
  expect(luxcoreGetNumThreads() == threads_omp_of_n_lux, "one variable");
  if (const char* const source = getenv("WANTED_SOURCE"))
    expect(strcmp(luxcoreThreadSource(), source) == 0, luxcoreThreadSource());
  luxcoreSetNumThreads(threads_omp_of_n_lux + 1);
  expect(strcmp(luxcoreThreadSource(), "program") == 0, "told that the program chose");
}

// ---- The caller's floating-point environment

static std::atomic<int> others;
static pthread_t caller;
static Environment seen[kThreads];

static Status look(const float* src, float*, int32_t) {
  if (!pthread_equal(pthread_self(), caller)) ++others;
  seen[int(*src)] = environment();
  const float zero = 0;
  float infinity;
  if (int(*src) == kThreads - 1) luxsInv_32f_A24(&zero, &infinity, 1);  // a flag on either unit
  return 0;
}

static void slices_see_the_callers_words() {
  caller = pthread_self();
#pragma omp parallel num_threads(kThreads)
  set({});  // threads start with the words of the one that starts them
  std::vector<float> number(kLen);
  for (int i = 0; i < kLen; ++i) number[i] = float(i / (kLen / kThreads));
  const Environment wanted = {0x0C7F & ~0x0020, 0x1F80 | 0x6000 | 0x8040};
  for (int k = 0; k < 2; ++k) {
    set(wanted);
    noxsThreading_1_1(look, kThreads, number.data(), number.data(), kLen);
    const Environment after = environment();
    const uint16_t x87 = x87_flags();
    set({});
    for (const Environment& e : seen) {
      expect(e.control == wanted.control, "the x87 control word of the caller");
      expect((e.mxcsr & ~kAllFlags) == wanted.mxcsr, "MXCSR of the caller");
    }
    expect(after.control == wanted.control, "the x87 control word after the call");
    expect(after.mxcsr == (wanted.mxcsr | kZeroDivide), "the flags of MXCSR after the call");
    expect(x87 == kZeroDivide, "the flags of the x87 unit after the call");
  }
  expect(others > 0, "slices ran in other threads");
#pragma omp parallel num_threads(kThreads)
  {
    const Environment e = environment();
    if (e.control != kDefaultControl || e.mxcsr != kDefaultMxcsr || x87_flags()) ++failures;
  }
  expect(failures == 0, "the runtime's threads have their own words back");
}

static void flags_of_the_last_slice() {
  Arrays<double> a;
  a.src.back() = 0;
  set({});
  inverses(a);
  const uint16_t x87 = x87_flags();
  set({});
  expect(x87 & kZeroDivide, "the report's flag of the x87 unit");
}

static void trap_in_the_last_slice() {
  const pid_t child = fork();
  if (child == 0) {  // serial: fork's children have no threads
    execl("/proc/self/exe", "guest_test", "trap", nullptr);
    _exit(1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  expect(WIFSIGNALED(status) && WTERMSIG(status) == SIGFPE, "an unmasked exception traps");
}
static void trap() {
#pragma omp parallel num_threads(kThreads)
  set({});
  Arrays<double> a;
  a.src.back() = 0;
  set({kDefaultControl & ~kZeroDivide});
  inverses(a);
}

static const struct {
  const char* name;
  void (*run)();
} kWays[] = {{"fork_after_own_regions", fork_after_own_regions},
             {"fork_after_split_calls", fork_after_split_calls},
             {"no_address_space", no_address_space},
             {"no_processes", no_processes},
             {"no_processor_to_bind_to", no_processor_to_bind_to},
             {"count_is_started", count_is_started},
             {"slices_see_the_callers_words", slices_see_the_callers_words},
             {"flags_of_the_last_slice", flags_of_the_last_slice},
             {"trap_in_the_last_slice", trap_in_the_last_slice},
             {"trap", trap}};

int main(int argc, char** argv) {
  for (const auto& way : kWays)
    if (argc == 2 && strcmp(argv[1], way.name) == 0) {
      if (way.run != count_is_started) threads_omp_of_n_lux = kThreads;
      way.run();
      return failures ? 1 : 0;
    }
  fprintf(stderr, "guest_test <way>\n");
  return 2;
}
