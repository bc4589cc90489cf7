// SPDX-License-Identifier: MIT
//
// Every single-precision argument of a one-argument function.
//
// Exact values come from the C library's long double functions, 40 bits more than a single has; where
// a function is smooth, most of each 4096 neighbours' from the curve through six of them. They are
// taken to be right to 2^-24 of a single's unit in the last place, which leaves 2^15 of the
// library's own units for its errors. That margin is checked against MPFR on one argument in 4096,
// and a result whose error comes within it of the ten worst, or of no plain class, is measured with
// MPFR itself. So no worst case can hide behind the quick values, and those that are listed are
// exact. (A result that equals its quick value counts as free of error: the functions without any
// error need no MPFR then.)
#ifndef LUX_ACCURACY_EXHAUSTIVE_H
#define LUX_ACCURACY_EXHAUSTIVE_H

#include "accuracy/survey.h"

namespace bench {

bool has_exhaustive_run(const Function& function);

// What is done of such a run; it can be kept and taken up again.
struct Exhaustion {
  static constexpr int kSlices = 1024;  // equal parts of the 2^32 patterns
  std::vector<bool> done = std::vector<bool>(kSlices);
  std::vector<Statistics> statistics;  // one per grade
};

// Goes on with `exhaustion` until all is done or `stop` is set. `save` is called between slices,
// not more often than every few seconds, and at the end.
void exhaust(const std::vector<const Function*>& grades, Exhaustion& exhaustion, int threads,
             const Advance& advance, const std::function<void()>& save,
             const std::atomic<bool>& stop);

}  // namespace bench

#endif
