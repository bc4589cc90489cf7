// SPDX-License-Identifier: MIT
//
// SLEEF, found at run time: its library is no part of the build.
#include "bench/measure.h"
#include "catalog/require.h"
#include "bench/sleef_loops.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>

namespace bench {
namespace {

struct Row {
  std::string_view family;
  const char *name, *best, *lower;  // endings of the most accurate and of the 3.5 ulp function
  SleefLoops SleefSet::*loops;      // null where there is none
};

using LoopsOfSet = SleefLoops SleefSet::*;
constexpr LoopsOfSet UNARY = &SleefSet::unary, BINARY = &SleefSet::binary,
                     SCALAR_SECOND = &SleefSet::scalar_second, TWO_RESULTS = &SleefSet::two_results,
                     TWO_RESULTS_SWAPPED = &SleefSet::two_results_swapped, NONE = nullptr;

constexpr Row kRows[] = {
#define LUX_SLEEF(F, loops, name, best, lower) {#F, #name, #best, #lower, loops},
#include "core/functions.def"
};

constexpr const Row* find(std::string_view family) {
  for (const Row& row : kRows)
    if (row.family == family) return &row;
  return nullptr;
}

#define LUX_FUNCTION(F, type)                \
  LUX_REQUIRE(is_complex(#type) || find(#F), \
              #F " " #type ": no LUX_SLEEF in core/functions.def; where SLEEF has none, NONE");
#include "core/functions.def"

void* library() {
  static void* const handle =
      __builtin_cpu_supports("sse2") ? dlopen("libsleef.so.3", RTLD_NOW | RTLD_LOCAL) : nullptr;
  return handle;
}

struct Set {
  const SleefSet* loops;
  const char *lanes[2],
      *ending;  // of singles and of doubles in a register; of the functions' names
  bool supported;
};

Set set_of(InstructionSet set) {
  switch (set) {
    case InstructionSet::kSse2:
      return {&kSleefSse2, {"f4", "d2"}, "sse2", bool(__builtin_cpu_supports("sse2"))};
    case InstructionSet::kAvx2:
      return {&kSleefAvx2,
              {"f8", "d4"},
              "avx2",
              __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")};
    default:
      return {&kSleefAvx512, {"f16", "d8"}, "avx512f", bool(__builtin_cpu_supports("avx512f"))};
  }
}

}  // namespace

std::string sleef_file() {
  link_map* loaded = nullptr;
  if (!library() || dlinfo(library(), RTLD_DI_LINKMAP, &loaded) != 0) return "";
  return std::filesystem::weakly_canonical(loaded->l_name).filename();
}

Peer find_sleef(const Function& function, InstructionSet instructions) {
  const Set set = set_of(instructions);
  if (function.type.complex() || !library() || !set.supported) return {};
  const Row& row = *find(function.family);
  if (!row.loops) return {};
  const bool wide = function.type.width == 8, best = function.variant <= 0;
  const std::string accuracy = best ? row.best : row.lower;
  const std::string name = std::string("Sleef_") + row.name + set.lanes[wide] +
                           (accuracy.empty() ? "_" : accuracy) + set.ending;
  void* const called = dlsym(library(), name.c_str());
  if (!called) return {};
  const SleefLoops& loops = set.loops->*row.loops;
  SleefLoop* const loop = wide ? loops.double_loop : loops.single_loop;
  return {name, [=](const Arrays& arrays, int32_t len, int32_t times) {
            loop(arrays.source, arrays.destination, len, times, called);
          }};
}

}  // namespace bench
