// SPDX-License-Identifier: MIT
//
// What a program does without the library: a loop over the C library's scalar function.
#include "bench/measure.h"
#include "catalog/require.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <vector>

namespace bench {
namespace {

using Complex32 = _Complex float;
using Complex64 = _Complex double;

// One body for every shape: STEP(i) computes element i.
#define LOOP(name, E, STEP)                                                         \
  void name(const Arrays& arrays, int32_t len, int32_t times) {                     \
    [[maybe_unused]] const E* const src1 = static_cast<const E*>(arrays.source[0]); \
    [[maybe_unused]] const E* const src2 = static_cast<const E*>(arrays.source[1]); \
    [[maybe_unused]] E* const dst1 = static_cast<E*>(arrays.destination[0]);        \
    [[maybe_unused]] E* const dst2 = static_cast<E*>(arrays.destination[1]);        \
    for (; times > 0; --times) {                                                    \
      for (int32_t i = 0; i < len; ++i) {                                           \
        STEP;                                                                       \
      }                                                                             \
      asm volatile("" ::: "memory");                                                \
    }                                                                               \
  }

#define REAL_STEPS(F, single_step, double_step) \
  LOOP(F##_32f, float, single_step)             \
  LOOP(F##_64f, double, double_step)
#define REAL_NONE(F, name)
#define REAL_UNARY(F, name) REAL_STEPS(F, dst1[i] = name##f(src1[i]), dst1[i] = name(src1[i]))
#define REAL_BINARY(F, name) \
  REAL_STEPS(F, dst1[i] = name##f(src1[i], src2[i]), dst1[i] = name(src1[i], src2[i]))
#define REAL_SCALAR_SECOND(F, name) \
  REAL_STEPS(F, dst1[i] = name##f(src1[i], src2[0]), dst1[i] = name(src1[i], src2[0]))
#define REAL_RECIPROCAL(F, name) \
  REAL_STEPS(F, dst1[i] = 1 / name##f(src1[i]), dst1[i] = 1 / name(src1[i]))
#define REAL_TWO_RESULTS(F, name) \
  REAL_STEPS(F, name##f(src1[i], dst1 + i, dst2 + i), name(src1[i], dst1 + i, dst2 + i))
#define REAL_FRACTION_RETURNED(F, name) \
  REAL_STEPS(F, dst2[i] = name##f(src1[i], dst1 + i), dst2[i] = name(src1[i], dst1 + i))

// C++ hides the C library's complex functions; __builtin_csqrt and so on call them.
#define COMPLEX_STEPS(F, single_step, double_step) \
  LOOP(F##_32fc, Complex32, single_step)           \
  LOOP(F##_64fc, Complex64, double_step)
#define COMPLEX_NONE(F, name)
#define COMPLEX_UNARY(F, name) \
  COMPLEX_STEPS(F, dst1[i] = __builtin_##name##f(src1[i]), dst1[i] = __builtin_##name(src1[i]))
#define COMPLEX_BINARY(F, name)                                     \
  COMPLEX_STEPS(F, dst1[i] = __builtin_##name##f(src1[i], src2[i]), \
                dst1[i] = __builtin_##name(src1[i], src2[i]))
#define COMPLEX_SCALAR_SECOND(F, name)                              \
  COMPLEX_STEPS(F, dst1[i] = __builtin_##name##f(src1[i], src2[0]), \
                dst1[i] = __builtin_##name(src1[i], src2[0]))

#define LUX_LIBM(F, kind, loop, name) kind##_##loop(F, name)
#include "core/functions.def"
#undef REAL_STEPS
#undef COMPLEX_STEPS
#undef REAL_NONE
#undef COMPLEX_NONE

struct Row {
  std::string_view family, type;
  void (*run)(const Arrays& arrays, int32_t len, int32_t times);  // null where there is none
};

constexpr Row kRows[] = {
#define REAL_STEPS(F, single_step, double_step) {#F, "32f", F##_32f}, {#F, "64f", F##_64f},
#define COMPLEX_STEPS(F, single_step, double_step) {#F, "32fc", F##_32fc}, {#F, "64fc", F##_64fc},
#define REAL_NONE(F, name) {#F, "32f", nullptr}, {#F, "64f", nullptr},
#define COMPLEX_NONE(F, name) {#F, "32fc", nullptr}, {#F, "64fc", nullptr},
#define LUX_LIBM(F, kind, loop, name) kind##_##loop(F, name)
#include "core/functions.def"
};

constexpr const Row* find(std::string_view family, std::string_view type) {
  for (const Row& row : kRows)
    if (row.family == family && row.type == type) return &row;
  return nullptr;
}

#define LUX_FUNCTION(F, type)  \
  LUX_REQUIRE(find(#F, #type), \
              #F " " #type     \
                 ": no LUX_LIBM in core/functions.def; where the C library has none, NONE");
#include "core/functions.def"

constexpr char kTunables[] = "GLIBC_TUNABLES", kWithoutSse2[] = "glibc.cpu.hwcaps=-SSE2";

// What this process was started with.
std::vector<std::string> command_line() {
  std::ifstream file("/proc/self/cmdline");
  std::vector<std::string> arguments;
  for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(argument);
  return arguments;
}

}  // namespace

Peer find_libm(const Function& function) {
  const Row* const row = find(function.family, function.type.name);
  return row->run ? Peer{"libm", row->run} : Peer{};
}

bool sse2_variants_left_out() {
  const char* const tunables = getenv(kTunables);
  return tunables && strstr(tunables, kWithoutSse2);
}

void leave_out_sse2_variants() {
  if (sse2_variants_left_out()) return;
  const std::vector<std::string> arguments = command_line();
  if (arguments.empty()) return;
  const char* const set = getenv(kTunables);
  const std::string before = set ? set : "";
  setenv(kTunables, (before.empty() ? kWithoutSse2 : before + ":" + kWithoutSse2).c_str(), 1);
  std::vector<char*> pointers;
  for (const std::string& argument : arguments)
    pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  execv("/proc/self/exe", pointers.data());
  before.empty() ? unsetenv(kTunables) : setenv(kTunables, before.c_str(), 1);
}

}  // namespace bench
