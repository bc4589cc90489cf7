// SPDX-License-Identifier: MIT
//
// The arrays that a function is measured over, filled from the intervals of the records.
#ifndef LUX_BENCH_ARGUMENTS_H
#define LUX_BENCH_ARGUMENTS_H

#include "catalog/intervals.h"
#include "catalog/random.h"

#include <array>
#include <cstdint>
#include <vector>

namespace bench {

// So many special elements in so many, evenly spread.
struct Share {
  int64_t special = 0, of = 1;

  // Elements before index i that are special.
  constexpr int64_t before(int64_t i) const { return (i * special + of / 2) / of; }
  constexpr bool holds(int64_t i) const { return before(i) != before(i + 1); }
};

// The operands of one element as bit patterns of their parts.
struct Element {
  std::array<uint64_t, 2> operand[2] = {};
};

struct Filling {
  int32_t n = 2000;
  int32_t offset = 0;  // bytes of every array beyond a cache line's start
  Share special;
  bool large = false;  // all elements beyond the fast reduction; has_large_arguments() says when
  // What special elements are, one after the other, and the first of them the scalar if all elements
  // are special; null: the record's special value.
  const std::vector<Element>* elements = nullptr;
};

// A number of the interval.
double draw(const Interval& interval, Random& random);

bool has_large_arguments(const Function& function);

class Arguments {
 public:
  Arguments(const Function& function, const Filling& filling);
  Arguments(const Arguments&) = delete;

  Arrays arrays;

 private:
  std::vector<char> bytes_;
};

}  // namespace bench

#endif
