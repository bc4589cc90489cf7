// SPDX-License-Identifier: MIT
//
// What the functions are to reach.
#ifndef LUX_CATALOG_GOALS_H
#define LUX_CATALOG_GOALS_H

#include "catalog/catalog.h"

namespace bench {

// How far from the exact value a result may be.
struct Accuracy {
  enum Kind { kUlp, kRelativeBits, kNormwiseBits, kNearest, kExact } kind;
  double value;
};

// As the records write it.
namespace accuracy_words {
constexpr Accuracy ULP(double units) { return {Accuracy::kUlp, units}; }
constexpr Accuracy BITS(double bits) { return {Accuracy::kRelativeBits, bits}; }
constexpr Accuracy NORMWISE(double bits) { return {Accuracy::kNormwiseBits, bits}; }
inline constexpr Accuracy NEAREST{Accuracy::kNearest, 0.5};  // every result is the nearest number
inline constexpr Accuracy EXACT{Accuracy::kExact, 0};
}  // namespace accuracy_words

struct Goal {
  Accuracy accuracy;
  double cycles;  // per element, about 2000 in cache, typical arguments; 0: none
};

// Never null: every record has its goals.
const Goal* find_goal(const Function& function);
// For arrays of which every element is too large for the fast reduction.
const Goal* find_large_argument_goal(const Function& function);
// Cycles of a call with one element beyond the element's own work.
double call_goal();

}  // namespace bench

#endif
