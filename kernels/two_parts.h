// SPDX-License-Identifier: MIT
//
// Table entries in two parts, whose sum is exact in extended precision: two memory operands cost
// less than one extended number.
#ifndef LUX_KERNELS_TWO_PARTS_H
#define LUX_KERNELS_TWO_PARTS_H

template <class Pair>
static inline long double sum(const Pair& entry) {
  return (long double)entry.high + entry.low;
}

// Both parts, or the leading one alone.
template <bool kBoth, class Pair>
static inline long double value_of(const Pair& entry) {
  return kBoth ? sum(entry) : (long double)entry.high;
}

#endif
