// SPDX-License-Identifier: MIT
//
// The families' typical arguments as data, and those too large for a fast reduction.
#ifndef LUX_CATALOG_INTERVALS_H
#define LUX_CATALOG_INTERVALS_H

#include "catalog/catalog.h"
#include "catalog/require.h"

#include <cmath>

namespace bench {

enum Spread { UNIFORM, LOG, SIGNED };

struct Interval {
  Spread spread = UNIFORM;
  double low = 0, high = 0;
};

struct Typical {
  std::string_view family;
  bool complex;
  Interval source[2];  // of the second source or the scalar, too
  int special_source;  // 1 or 2
  double special;
};

struct LargeInput {
  std::string_view family;
  Interval source;
};

namespace intervals_detail {
constexpr double kInfinity = HUGE_VAL, kNaN = NAN;
constexpr bool REAL = false, COMPLEX = true;

inline constexpr Typical kTypical[] = {
#define LUX_INPUT(F, kind, s1, low1, high1, s2, low2, high2, source, special) \
  {#F, kind, {{s1, low1, high1}, {s2, low2, high2}}, source, special},
#include "core/functions.def"
};
inline constexpr LargeInput kLarge[] = {
#define LUX_LARGE_INPUT(F, spread, low, high) {#F, {spread, low, high}},
#include "core/functions.def"
};

constexpr const Typical* find(std::string_view family, bool complex) {
  for (const Typical& row : kTypical)
    if (row.family == family && row.complex == complex) return &row;
  return nullptr;
}

#define LUX_FUNCTION(F, type) \
  LUX_REQUIRE(find(#F, is_complex(#type)), #F " " #type ": no LUX_INPUT in core/functions.def");
#include "core/functions.def"
}  // namespace intervals_detail

inline const Typical& typical_of(const Function& function) {
  return *intervals_detail::find(function.family, function.type.complex());
}

// Null for families that have no fast reduction to miss.
inline const Interval* large_interval(const Function& function) {
  for (const LargeInput& row : intervals_detail::kLarge)
    if (row.family == function.family && !function.type.complex()) return &row.source;
  return nullptr;
}

}  // namespace bench

#endif
