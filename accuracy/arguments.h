// SPDX-License-Identifier: MIT
//
// The arguments on which a function's accuracy is measured.
#ifndef LUX_ACCURACY_ARGUMENTS_H
#define LUX_ACCURACY_ARGUMENTS_H

#include "accuracy/oracle.h"

#include <cmath>
#include <vector>

namespace bench {

struct Sampling {
  int samples = 200'000;  // about; all step points come on top of it
  uint64_t seed = 1;
  double low = -HUGE_VAL, high = HUGE_VAL;  // of the first argument, of its real part when complex

  bool whole_line() const { return low == -HUGE_VAL && high == HUGE_VAL; }
};

// Arguments over every exponent, dense where results are ordinary, at the steps of the method,
// where the class of the result changes (found by bisection), and at hard cases: near multiples of
// pi/2 for sine, cosine and tangent, and where the exact result lies next to the midpoint of two
// numbers (found by search). For two arguments also the lines on which something may cancel.
// Elements of functions with a scalar are grouped by it.
std::vector<Argument> make_arguments(const Function& function, const Sampling& sampling);

// For the binade of 2^exponent: the numbers of that width that are nearest to a multiple of pi/2,
// relative to it, by continued fractions.
std::vector<uint64_t> nearest_to_pi_multiples(int exponent, int width);

}  // namespace bench

#endif
