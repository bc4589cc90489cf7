// SPDX-License-Identifier: MIT
//
// Random pairs of operands of the functions of two singles: whether every result is the nearest
// single. Expected are the C library's values; where one is so near the middle between two singles
// that its error leaves the nearest open, MPFR tells. Pairs are drawn so that most results are finite
// numbers that depend on both operands; subnormal ones, both edges of the range, powers that end in
// the middle of two singles and negative bases are among them, and arbitrary patterns.
#ifndef LUX_ACCURACY_PAIRS_H
#define LUX_ACCURACY_PAIRS_H

#include "accuracy/survey.h"

namespace bench {

bool has_pairs(const Function& function);

struct PairCount {
  uint64_t tried = 0, by_mpfr = 0, not_nearest = 0;
  std::vector<Case> wrong;  // the first kWorst
};

PairCount try_pairs(const Function& function, uint64_t pairs, uint64_t seed, int threads,
                    const Advance& advance, const std::atomic<bool>& stop);

}  // namespace bench

#endif
