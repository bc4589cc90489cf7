// SPDX-License-Identifier: MIT
//
// Every built vector function, so that a test can walk over all of them.
#ifndef LUX_TESTS_CATALOG_H
#define LUX_TESTS_CATALOG_H

#include "core/catalog.h"

#include <vector>

inline const std::vector<Function> kCatalog = [] {
  std::vector<Function> built;
  for (const Function& f : kFunctions)
    if (f.call) built.push_back(f);
  return built;
}();

// Arguments for which a family computes without any exception but inexact, under either sign of
// rounding: the interval of every source.
struct Interval {
  double low, high;
};
inline Interval ordinary_interval(const Function& f) {
  if (f.family == "Acosh") return {1.25, 1.875};
  return {0.25, 0.875};
}

#endif
