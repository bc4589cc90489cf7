// SPDX-License-Identifier: MIT
//
// What a program does without the library: a loop over the C library's scalar function.
#include "bench/loops.h"
#include "bench/measure.h"
#include "catalog/require.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <vector>

namespace bench {
namespace {

constexpr bool REAL = false, COMPLEX = true;

// Whether the records say what to compare with, even if that is nothing.
constexpr bool has_record(std::string_view family, bool complex) {
  struct Row {
    std::string_view family;
    bool complex;
  };
  constexpr Row kRows[] = {
#define LUX_LIBM(F, kind, loop, name) {#F, kind},
#include "core/functions.def"
  };
  for (const Row& row : kRows)
    if (row.family == family && row.complex == complex) return true;
  return false;
}

#define LUX_FUNCTION(F, type)                    \
  LUX_REQUIRE(has_record(#F, is_complex(#type)), \
              #F " " #type                       \
                 ": no LUX_LIBM in core/functions.def; where the C library has none, NONE");
#include "core/functions.def"

Peer find_loop(const PlainLoops& loops, const char* name, const Function& function) {
  for (const PlainLoop* row = loops.first; row != loops.last; ++row)
    if (row->run && function.is(row->family, row->type))
      return {name, [run = row->run](const Arrays& arrays, int32_t len, int32_t times) {
                run(arrays.source, arrays.destination, len, times);
              }};
  return {};
}

constexpr char kTunables[] = "GLIBC_TUNABLES", kWithoutSse2[] = "glibc.cpu.hwcaps=-SSE2";

// What this process was started with.
std::vector<std::string> command_line() {
  std::ifstream file("/proc/self/cmdline");
  std::vector<std::string> arguments;
  for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(argument);
  return arguments;
}

}  // namespace

Peer find_libm(const Function& function) { return find_loop(kLoops387, "gcc -m32 -O2", function); }

Peer find_libm_sse2(const Function& function) {
  if (!__builtin_cpu_supports("sse2")) return {};
  return find_loop(kLoopsSse2, "gcc -m32 -O2 -msse2 -mfpmath=sse", function);
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
