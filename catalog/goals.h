// SPDX-License-Identifier: MIT
//
// What the functions are to reach.
#ifndef LUX_CATALOG_GOALS_H
#define LUX_CATALOG_GOALS_H

#include "catalog/catalog.h"

namespace bench {

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
// For arrays of which every element is too large for the fast reduction.
const Goal* find_large_argument_goal(const Function& function);
// Cycles of a call with one element beyond the element's own work.
double call_goal();

}  // namespace bench

#endif
