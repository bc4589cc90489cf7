// SPDX-License-Identifier: MIT
//
// Core cycles per element of the library's exports, measured in place.
//
// The time-stamp counter does not run at the core's clock. So every sample stands between two
// calibrations, loops of dependent one-cycle instructions, and is dropped when the two disagree.
#ifndef LUX_BENCH_MEASURE_H
#define LUX_BENCH_MEASURE_H

#include "core/catalog.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// Calls one function `times` times over `len` elements.
using Loop = void (*)(const Arrays& arrays, int32_t len, int32_t times);

// How far from the exact value a result may be.
struct Accuracy {
  enum Kind { kUlp, kRelativeBits, kNormwiseBits, kExact } kind;
  double value;
};

struct Goal {
  Accuracy accuracy;
  double cycles;  // per element, about 2000 in cache, typical arguments; 0: none
};

// Null when there is none.
const Goal* find_goal(const Function& function);

// The C library's scalar function in a loop over the same arrays, or null.
Loop find_libm_loop(const Function& function);

// The C library picks other variants of its functions on processors with SSE2. Start the program
// once more without them; returns when that has happened already or cannot be done.
void leave_out_sse2_variants(char** argv);

struct Options {
  int32_t n = 2000;
  int32_t special_every = 0;  // every how many elements a special one stands, 0 for none
  int32_t offset = 0;         // bytes of every array beyond a cache line's start
  int32_t milliseconds = 60;  // spent on one figure
  bool compare = false;       // measure the C library's loop, too
};

// Not numbers when the clock never held still.
struct Figure {
  double minimum = std::numeric_limits<double>::quiet_NaN();
  double median = std::numeric_limits<double>::quiet_NaN();
};

struct Result {
  const Function* function = nullptr;
  const Goal* goal = nullptr;
  Figure element;      // cycles per element
  Figure single_call;  // cycles per call with one element
  bool has_libm = false;
  Figure libm;          // cycles per element of the C library's loop
  int32_t kept = 0;     // calibrated rounds that count
  int32_t dropped = 0;  // those in which the clock did not hold still
};

// Number of threads: luxcoreSetNumThreads before the first call.
Result measure(const Function& function, const Options& options);

// Ticks of the time-stamp counter per core cycle, now.
double ticks_per_cycle();

std::string processor_name();

}  // namespace bench

#endif
