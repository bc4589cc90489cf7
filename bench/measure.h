// SPDX-License-Identifier: MIT
//
// Core cycles of a loop, and what the library's exports are measured against.
//
// The time-stamp counter does not run at the core's clock. So every sample stands between two
// calibrations, loops of dependent one-cycle instructions, and is dropped when the two disagree.
#ifndef LUX_BENCH_MEASURE_H
#define LUX_BENCH_MEASURE_H

#include "catalog/catalog.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

namespace bench {

// Not numbers when the clock never held still.
struct Figure {
  double minimum = std::numeric_limits<double>::quiet_NaN();
  double median = std::numeric_limits<double>::quiet_NaN();
  int32_t kept = 0;     // calibrated rounds that count
  int32_t dropped = 0;  // those in which the clock did not hold still
};

// Core cycles of loop(1), from samples of loop(times) for about so long. Before each sample the upper
// halves of the vector registers are cleared: a peer that left them dirty would slow what comes next.
Figure measure(const std::function<void(int32_t times)>& loop, int32_t milliseconds);

// Ticks of the time-stamp counter per core cycle, now.
double ticks_per_cycle();

// Another implementation; runs `times` times over the same arrays. Empty when there is none.
struct Peer {
  std::string name;
  std::function<void(const Arrays& arrays, int32_t len, int32_t times)> run;
};

// A plain loop over the C library's function or the operator, with the compiler's built-ins, as it is
// compiled for any 32-bit processor and for one with SSE2.
Peer find_libm(const Function& function);
Peer find_libm_sse2(const Function& function);

// The C library picks other variants of its functions on processors with SSE2. Starts the program
// once more without them; returns when that has happened already or cannot be done.
void leave_out_sse2_variants();
bool sse2_variants_left_out();

// SLEEF's vector function for one instruction set, where its shared library is installed and the
// processor has the instructions: the most accurate one for the best grade, otherwise the one of
// 3.5 ulp if there is one.
enum class InstructionSet { kSse2, kAvx2, kAvx512 };
Peer find_sleef(const Function& function, InstructionSet set);
std::string sleef_file();  // whose name tells the version; empty where there is none

}  // namespace bench

#endif
