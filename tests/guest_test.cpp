// SPDX-License-Identifier: MIT
//
// The library inside programs of every kind, one to a process: guest_test <way>. Exits with 0 when
// all is as it should be. The splitters are called directly, so that calls are split on any
// machine.
#include <dirent.h>
#include <errno.h>
#include <omp.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "catalog/catalog.h"
#include "luxcore.h"
#include "tests/support.h"

constexpr int kThreads = 4, kLen = 4000;

static int failures = 0;
static void expect(bool condition, const char* what) {
  if (condition) return;
  ++failures;
  fprintf(stderr, "not so: %s\n", what);
}

template <class E>
struct Slices {
  std::vector<E> src = std::vector<E>(kLen, E(2)), dst = std::vector<E>(kLen);
};

// Inv in kThreads slices; a zero as last element is reported in the last one.
template <class E>
static Status inverses(Slices<E>& a);
template <>
Status inverses(Slices<float>& a) {
  return noxsThreading_1_1(luxsInv_32f_A24, kThreads, a.src.data(), a.dst.data(), kLen);
}
template <>
Status inverses(Slices<double>& a) {
  return noxdThreading_1_1(luxsInv_64f_A53, kThreads, a.src.data(), a.dst.data(), kLen);
}

static bool inverses_are_right() {
  Slices<float> a;
  a.src.back() = 0;
  if (inverses(a) != LUX_POLE) return false;
  for (int i = 0; i < kLen - 1; ++i)
    if (a.dst[i] != 0.5f) return false;
  return std::isinf(a.dst.back());
}

// ---- All functions, wherever the program stands

constexpr int kLength = 40;
typedef unsigned char Numbers[5][kLength * 16];
static Numbers programs_numbers, handlers_numbers;

// Results of every function, of numbers of every class, as one number. Little stack is taken here.
static uint64_t all_results(Numbers& numbers = programs_numbers) {
  uint64_t digest = 0xCBF29CE484222325;
  for (const Function& f : kFunctions) {
    Random random{f.name.size() + f.name[4]};
    const int count = kLength * f.type.parts;
    for (int k = 0; k < 3; ++k)
      for (int i = 0; i < count; ++i)
        if (f.type.width == 4)
          reinterpret_cast<uint32_t*>(numbers[k])[i] = any_pattern<uint32_t>(random);
        else
          reinterpret_cast<uint64_t*>(numbers[k])[i] = any_pattern<uint64_t>(random);
    const Status status =
        f.call({{numbers[0], numbers[1]}, {numbers[3], numbers[4]}, numbers[2]}, kLength);
    const auto add = [&](unsigned char byte) { digest = (digest ^ byte) * 0x100000001B3; };
    add(static_cast<unsigned char>(status));
    for (int k = 0; k < f.shape.destinations; ++k)
      for (int i = 0; i < count * f.type.width; ++i) add(numbers[3 + k][i]);
  }
  return digest;
}

static int threads_of_process() {
  int count = 0;
  DIR* const tasks = opendir("/proc/self/task");
  while (tasks && readdir(tasks)) ++count;
  if (tasks) closedir(tasks);
  return count - 2;  // . and ..
}

// ---- Before main and after it

// First of all code in the process, the libraries' own constructors included; then that of a library
// which does not say that it needs this one; then the program's.
static bool wants(int argc, char** argv, const char* way) {
  return argc == 2 && strcmp(argv[1], way) == 0;
}
extern "C" float early_results[5];
static uint64_t first_results, own_results;
static void first_of_all(int argc, char** argv, char**) {
  if (wants(argc, argv, "before_main")) first_results = all_results();
}
__attribute__((section(".preinit_array"),
               used)) static void (*const at_first)(int, char**, char**) = first_of_all;
__attribute__((constructor(101))) static void before_main(int argc, char** argv) {
  if (!wants(argc, argv, "before_main")) return;
  threads_omp_of_n_lux = 3;
  own_results = all_results();
}

// A function's threshold is that of the first call that knew of threads.
static void before_main() {
  const uint64_t results = all_results();
  expect(first_results == results, "the results of the first code in the process");
  expect(own_results == results, "the results of a constructor");
  expect(early_results[3] == 0.125f && std::isinf(early_results[4]), "those of a library's");
  threads_omp_of_n_lux = 3;  // still, whatever main has set
  const int32_t for_two = noxsMinN(0, 0, 2), for_three = noxsMinN(0, 0, 3);
  if (for_three == INT32_MAX) return;  // not on this machine
  std::vector<float> numbers(for_three + 1, 2.0f);
  luxsInv_32f_A24(numbers.data(), numbers.data(), for_two + 1);
  expect(threads_of_process() == 1, "a call below the threshold is not split");
  luxsInv_32f_A24(numbers.data(), numbers.data(), for_three + 1);
  expect(threads_of_process() == 3, "a call above it is");
}

// Succeeds in the last code of the process alone.
static uint64_t results_at_end;
static void check_at_end() {
  if (!results_at_end) return;
  expect(all_results() == results_at_end && inverses_are_right(), "right at the end");
}
static const struct AtEnd {
  ~AtEnd() { check_at_end(); }
} at_end;
__attribute__((destructor)) static void last_of_all() {
  check_at_end();
  if (results_at_end) _exit(failures - 1);
}
static void at_exit() {
  results_at_end = all_results();
  atexit(check_at_end);
  ++failures;
}

// ---- Small stacks

#ifdef LUX_SANITIZE
constexpr size_t kStackOfACall = 1 << 16;  // frames with red zones
#else
constexpr size_t kStackOfACall = 4096;  // as the reference says
#endif
static uint64_t wanted_results;
static int interrupts = 0;
static const void* frame_of_handler;
static void interrupt_soon() {
  const itimerval soon = {{}, {0, 300 + 37 * interrupts}};
  if (++interrupts < 20) setitimer(ITIMER_REAL, &soon, nullptr);
}
static void handle(int) {
  frame_of_handler = __builtin_frame_address(0);
  expect(all_results(handlers_numbers) == wanted_results, "the results in a handler");
  interrupt_soon();
}

// The first calls of all, and then calls in the midst of others.
static void small_signal_stack() {
  const size_t size = sysconf(_SC_MINSIGSTKSZ) + kStackOfACall;
  const Guarded memory(size / Guarded::kPage + 1);
  const stack_t stack = {memory.start(), 0, size};
  memset(memory.start(), 0xA5, size);
  sigaltstack(&stack, nullptr);
  struct sigaction action = {};
  action.sa_handler = [](int) { wanted_results = all_results(handlers_numbers); };
  action.sa_flags = SA_ONSTACK;
  sigaction(SIGALRM, &action, nullptr);
  raise(SIGALRM);
  action.sa_handler = handle;
  sigaction(SIGALRM, &action, nullptr);
  interrupt_soon();
  while (interrupts < 20)
    expect(all_results() == wanted_results, "the results of interrupted calls");
  const unsigned char* lowest = memory.start();
  while (*lowest == 0xA5) ++lowest;
  expect(size_t(static_cast<const unsigned char*>(frame_of_handler) - lowest) < kStackOfACall,
         "the stack that a call takes");
}

template <class Work>
static void* run_work(void* work) {
  (*static_cast<Work*>(work))();
  return nullptr;
}
// On the smallest stack there is.
template <class Work>
static void* in_small_thread(Work work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, PTHREAD_STACK_MIN);
  pthread_t thread;
  void* result = nullptr;
  if (pthread_create(&thread, &attributes, run_work<Work>, &work) != 0) abort();
  pthread_join(thread, &result);
  return result;
}

// A thread that is to end ends behind the call, not within it.
static void threads_that_end() {
  const uint64_t results = all_results();
  bool right[3] = {}, passed = false;
  in_small_thread([&] { right[0] = all_results() == results && inverses_are_right(); });
  in_small_thread([&] {
    right[1] = inverses_are_right();
    pthread_exit(nullptr);
  });
  void* const result = in_small_thread([&] {
    pthread_cancel(pthread_self());
    right[2] = inverses_are_right();
    pthread_testcancel();
    passed = true;
  });
  expect(right[0] && right[1], "the results in a thread with a small stack");
  expect(right[2], "a call that a cancellation waits for is not cut off");
  expect(result == PTHREAD_CANCELED && !passed, "the thread is cancelled behind it");
  expect(inverses_are_right(), "other threads go on");
}

// ---- Forks

static bool child_succeeds() {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);  // a hanging child ends by this
    exit(inverses_are_right() ? 0 : 1);
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
  limit(RLIMIT_AS, rlim_t(pages) * 4096 + (20 << 20));  // a thread's stack has 8 MB, or as told
  const char* const wanted = getenv("WANTED_COUNT");
  expect(inverses_are_right(), "right without threads");
  expect(threads_of_process() == (wanted ? atoi(wanted) : 1), "threads of the size that is set");
}

static void no_processes() {
  if (getuid() == 0 && setuid(65534) != 0) perror("setuid");  // root has no limit
  limit(RLIMIT_NPROC, 0);
  expect(inverses_are_right(), "right without threads");
}

// No file can be opened, so nothing of /proc and /sys be read, and nothing printed.
static void no_files() {
  const uint64_t results = all_results();
  limit(RLIMIT_NOFILE, 0);
  for (int stream = 0; stream < 3; ++stream) close(stream);
  expect(inverses_are_right() && all_results() == results, "right without files");
}

// With GOMP_CPU_AFFINITY naming a processor that is then taken away.
static void no_processor_to_bind_to() {
  cpu_set_t processors;
  sched_getaffinity(0, sizeof processors, &processors);
  for (int k = CPU_SETSIZE; CPU_COUNT(&processors) > 1;) CPU_CLR(--k, &processors);
  sched_setaffinity(0, sizeof processors, &processors);
  expect(inverses_are_right(), "right without threads");
}

static void more_slices_than_processors() {
  std::vector<float> numbers(kLen, 2.0f);
  threads_omp_of_n_lux = 3 * 64;
  noxsThreading_1_1(luxsInv_32f_A24, 3 * 64, numbers.data(), numbers.data(), kLen);
  expect(numbers == std::vector<float>(kLen, 0.5f), "right in many slices");
  expect(threads_of_process() == std::max(64, omp_get_num_procs()), "no more threads than useful");
}

// ---- The thread count

// The system's call, or one that refuses, or that wants as many bytes and knows five processors.
extern "C" int sched_getaffinity(pid_t process, size_t size, cpu_set_t* mask) noexcept {
  const char* const least = getenv("LEAST_AFFINITY");
  if (!least) {
    const long used = syscall(SYS_sched_getaffinity, process, size, mask);
    return used < 0 ? -1 : 0;
  }
  errno = atol(least) == 0 ? EPERM : EINVAL;
  if (errno == EPERM || size < size_t(atol(least))) return -1;
  for (int k = 0; k < 5; ++k) CPU_SET_S(k * 9, size, mask);
  return 0;
}

// In a program that is not position-independent, the variable is moved into the program.
static void count_is_started() {
  const char* const wanted = getenv("WANTED_COUNT");
  const char* const affinity = getenv("LEAST_AFFINITY");
  const int processors = affinity ? int(sysconf(_SC_NPROCESSORS_ONLN)) : omp_get_num_procs();
  expect(threads_omp_of_n_lux == (wanted ? atoi(wanted) : processors), "the count");
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
  Slices<double> a;
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
  Slices<double> a;
  a.src.back() = 0;
  set({kDefaultControl & ~kZeroDivide});
  inverses(a);
}

static const struct {
  const char* name;
  void (*run)();
} kWays[] = {{"before_main", before_main},
             {"at_exit", at_exit},
             {"small_signal_stack", small_signal_stack},
             {"threads_that_end", threads_that_end},
             {"no_files", no_files},
             {"fork_after_own_regions", fork_after_own_regions},
             {"fork_after_split_calls", fork_after_split_calls},
             {"no_address_space", no_address_space},
             {"no_processes", no_processes},
             {"more_slices_than_processors", more_slices_than_processors},
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
