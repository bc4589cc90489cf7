// SPDX-License-Identifier: MIT
//
// SLEEF, found at run time: its library is no part of the build.
#include "bench/measure.h"
#include "bench/sleef_loops.h"

#include <dlfcn.h>

namespace bench {
namespace {

struct Row {
  std::string_view family;
  const char *name, *best, *lower;  // endings of the most accurate and of the 3.5 ulp function
  const SleefLoops& loops;
};

const Row kRows[] = {
    {"Sqrt", "sqrt", "_u05", "_u35", kSleefUnary},
    {"Cbrt", "cbrt", "_u10", "_u35", kSleefUnary},
    {"Pow", "pow", "_u10", "_u10", kSleefBinary},
    {"Powx", "pow", "_u10", "_u10", kSleefScalarSecond},
    {"Exp", "exp", "_u10", "_u10", kSleefUnary},
    {"Ln", "log", "_u10", "_u35", kSleefUnary},
    {"Log10", "log10", "_u10", "_u10", kSleefUnary},
    {"Cos", "cos", "_u10", "_u35", kSleefUnary},
    {"Sin", "sin", "_u10", "_u35", kSleefUnary},
    {"SinCos", "sincos", "_u10", "_u35", kSleefTwoResults},
    {"Tan", "tan", "_u10", "_u35", kSleefUnary},
    {"Acos", "acos", "_u10", "_u35", kSleefUnary},
    {"Asin", "asin", "_u10", "_u35", kSleefUnary},
    {"Atan", "atan", "_u10", "_u35", kSleefUnary},
    {"Atan2", "atan2", "_u10", "_u35", kSleefBinary},
    {"Cosh", "cosh", "_u10", "_u35", kSleefUnary},
    {"Sinh", "sinh", "_u10", "_u35", kSleefUnary},
    {"Tanh", "tanh", "_u10", "_u35", kSleefUnary},
    {"Acosh", "acosh", "_u10", "_u10", kSleefUnary},
    {"Asinh", "asinh", "_u10", "_u10", kSleefUnary},
    {"Atanh", "atanh", "_u10", "_u10", kSleefUnary},
    {"Erf", "erf", "_u10", "_u10", kSleefUnary},
    {"Erfc", "erfc", "_u15", "_u15", kSleefUnary},
    {"Hypot", "hypot", "_u05", "_u35", kSleefBinary},
    {"Floor", "floor", "", "", kSleefUnary},
    {"Ceil", "ceil", "", "", kSleefUnary},
    {"Trunc", "trunc", "", "", kSleefUnary},
    {"Round", "round", "", "", kSleefUnary},
    {"NearbyInt", "rint", "", "", kSleefUnary},
    {"Rint", "rint", "", "", kSleefUnary},
    // Its fraction comes first, its whole part second.
    {"Modf", "modf", "", "", kSleefTwoResultsSwapped},
};

void* library() {
  static void* const handle =
      __builtin_cpu_supports("sse2") ? dlopen("libsleef.so.3", RTLD_NOW | RTLD_LOCAL) : nullptr;
  return handle;
}

}  // namespace

Peer find_sleef(const Function& function) {
  if (function.type.complex() || !library()) return {};
  for (const Row& row : kRows) {
    if (row.family != function.family) continue;
    const bool wide = function.type.width == 8, best = function.variant <= 0;
    const std::string name =
        std::string("Sleef_") + row.name + (wide ? "d2" : "f4") + (best ? row.best : row.lower);
    void* const called = dlsym(library(), name.c_str());
    if (!called) continue;
    SleefLoop* const loop = wide ? row.loops.double_loop : row.loops.single_loop;
    return {name, [=](const Arrays& arrays, int32_t len, int32_t times) {
              loop(arrays.source, arrays.destination, len, times, called);
            }};
  }
  return {};
}

}  // namespace bench
