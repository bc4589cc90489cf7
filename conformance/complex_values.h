// SPDX-License-Identifier: MIT
//
// One call of a function with its special arguments, and what must come out of it.
#ifndef LUX_CONFORMANCE_COMPLEX_VALUES_H
#define LUX_CONFORMANCE_COMPLEX_VALUES_H

#include "catalog/catalog.h"

#include <stdint.h>

#include <string_view>
#include <vector>

namespace bench {

// How a result is compared: by its bits, or not so strictly. kNear: within 2^-21, four last places
// of a single.
enum class Match { kBits, kAny, kNaN, kZero, kNear };

struct Part {
  uint64_t bits = 0;
  Match match = Match::kBits;
  constexpr Part(uint64_t bits) : bits(bits) {}
  constexpr Part(Match match) : match(match) {}
  constexpr Part(uint64_t bits, Match match) : bits(bits), match(match) {}
};

struct Number {
  Part re = 0, im = 0;
  constexpr Number() = default;
  constexpr Number(uint64_t bits) : re(bits) {}
  constexpr Number(Match match) : re(match), im(match) {}
  constexpr Number(Part re, Part im) : re(re), im(im) {}
};

struct SpecialRow {
  std::string_view file;
  int line;
  Number argument[2], result[2];
  int code;
};

// Those of conformance/complex_values.def, with all that symmetry makes of them.
std::vector<SpecialRow> complex_rows(const Function& function);

}  // namespace bench

#endif
