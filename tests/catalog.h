// SPDX-License-Identifier: MIT
//
// The vector functions, and arguments that suit them.
#ifndef LUX_TESTS_CATALOG_H
#define LUX_TESTS_CATALOG_H

#include "catalog/catalog.h"

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
