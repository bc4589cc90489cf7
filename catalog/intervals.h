// SPDX-License-Identifier: MIT
//
// The families' typical arguments as data.
#ifndef LUX_CATALOG_INTERVALS_H
#define LUX_CATALOG_INTERVALS_H

#include "catalog/catalog.h"

#include <cmath>
#include <stdexcept>
#include <string>

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

namespace intervals_detail {
constexpr double kInfinity = HUGE_VAL, kNaN = NAN;
inline constexpr Typical kRows[] = {
#define LUX_INPUT(F, complex, s1, low1, high1, s2, low2, high2, source, special) \
  {#F, complex, {{s1, low1, high1}, {s2, low2, high2}}, source, special},
#define LUX_REAL_INPUT(F, ...) LUX_INPUT(F, false, __VA_ARGS__)
#define LUX_COMPLEX_INPUT(F, ...) LUX_INPUT(F, true, __VA_ARGS__)
#include "catalog/intervals.def"
#undef LUX_REAL_INPUT
#undef LUX_COMPLEX_INPUT
#undef LUX_INPUT
};
}  // namespace intervals_detail

inline const Typical& typical_of(const Function& function) {
  for (const Typical& row : intervals_detail::kRows)
    if (row.family == function.family && row.complex == function.type.complex()) return row;
  throw std::logic_error("no typical interval for " + std::string(function.family));
}

}  // namespace bench

#endif
