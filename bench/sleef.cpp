// SPDX-License-Identifier: MIT
//
// SLEEF, found at run time: its library is no part of the build.
#include "bench/measure.h"
#include "catalog/require.h"
#include "bench/sleef_loops.h"

#include <dlfcn.h>

namespace bench {
namespace {

struct Row {
  std::string_view family;
  const char *name, *best, *lower;  // endings of the most accurate and of the 3.5 ulp function
  const SleefLoops* loops;          // null where there is none
};

constexpr const SleefLoops *UNARY = &kSleefUnary, *BINARY = &kSleefBinary,
                           *SCALAR_SECOND = &kSleefScalarSecond, *TWO_RESULTS = &kSleefTwoResults,
                           *TWO_RESULTS_SWAPPED = &kSleefTwoResultsSwapped, *NONE = nullptr;

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

}  // namespace

Peer find_sleef(const Function& function) {
  if (function.type.complex() || !library()) return {};
  const Row& row = *find(function.family);
  if (!row.loops) return {};
  const bool wide = function.type.width == 8, best = function.variant <= 0;
  const std::string name =
      std::string("Sleef_") + row.name + (wide ? "d2" : "f4") + (best ? row.best : row.lower);
  void* const called = dlsym(library(), name.c_str());
  if (!called) return {};
  SleefLoop* const loop = wide ? row.loops->double_loop : row.loops->single_loop;
  return {name, [=](const Arrays& arrays, int32_t len, int32_t times) {
            loop(arrays.source, arrays.destination, len, times, called);
          }};
}

}  // namespace bench
