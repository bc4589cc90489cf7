// SPDX-License-Identifier: MIT
//
// What a function gives for a fixed set of arguments, so that two installations can be compared bit
// for bit. The arguments come from an integer generator and are the same on every machine.
#ifndef LUX_CONFORMANCE_RESULT_HASH_H
#define LUX_CONFORMANCE_RESULT_HASH_H

#include "catalog/catalog.h"

#include <optional>
#include <string>

namespace bench {

// The state of the calling program, none of which may change a result.
struct Conditions {
  uint16_t x87_control = 0x037F;
  uint32_t mxcsr = 0x1F80;
  int offset = 0;  // bytes of the arrays beyond an aligned address
};

struct FixedResults {
  std::string bytes;  // results in the order of the calls, each call's status after them
  int64_t elements = 0;
  uint64_t hash() const;  // FNV-1a
};

// Several calls on one thread: typical arguments, every exponent with both signs, special elements
// among typical ones, short arrays. Where more than one NaN can meet, a NaN result counts as the
// default one: which payload survives is left open.
FixedResults fixed_results(const Function& function, const Conditions& conditions = {});

// Whether `threads` threads give what one gives. `threshold` is the length above which the function
// threads. Empty when no array of reasonable length does.
std::optional<bool> same_over_threads(const Function& function, int32_t threads, int32_t threshold);

// Of the release, in conformance/result_hashes.def.
std::optional<uint64_t> published_hash(const Function& function);

// The kernel uses instructions whose last bits each processor chooses itself, so the hash may
// differ between processors (conformance/processor_dependent.def).
bool processor_dependent(const Function& function);

}  // namespace bench

#endif
