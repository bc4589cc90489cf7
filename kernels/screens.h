// SPDX-License-Identifier: MIT
//
// Screening: whether the elements of a block are all ordinary, by their upper words. What a word
// says stands in its sign bit, so that the words of a block are joined and tested once.
#ifndef LUX_KERNELS_SCREENS_H
#define LUX_KERNELS_SCREENS_H

#include "core/bits.h"

static inline bool sign_bit(uint32_t joined) { return int32_t(joined) < 0; }

// The sign bit is set unless first <= word < end; words may have a sign bit of their own, bounds
// have none.
static inline uint32_t outside(uint32_t word, uint32_t first, uint32_t end) {
  return (word - first) | (end - 1 - word);
}

template <class E>
static inline bool is_normal(const E* x) {
  return upper_magnitude(x) - Upper<E>::kSmallestNormal <
         Upper<E>::kInf - Upper<E>::kSmallestNormal;
}

template <class E>
static inline bool is_positive_normal(const E* x) {
  return upper_word(x) - Upper<E>::kSmallestNormal < Upper<E>::kInf - Upper<E>::kSmallestNormal;
}

// The same as a screen's word.
template <class E>
static inline uint32_t outside_positive_normal(const E* x) {
  return outside(upper_word(x), Upper<E>::kSmallestNormal, Upper<E>::kInf);
}

template <int kCount, class Outside>
static inline bool none_outside(Outside outside_of) {
  uint32_t any = 0;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) any |= outside_of(lane);
  return !sign_bit(any);
}

// All magnitudes below the number with this upper word. Magnitudes have no sign bit themselves, so
// one difference is enough.
template <int kCount, class E>
static inline bool all_below(const E* x, uint32_t bound) {
  uint32_t below = ~0u;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) below &= upper_magnitude(x + lane) - bound;
  return sign_bit(below);
}

// Whole blocks below the bound: block(x, y) computes one.
template <int kBlock, class E, class Block>
static inline int32_t blocks_below(const E* src, E* dst, uint32_t bound, int32_t i, int32_t last,
                                   Block block) {
  for (; i < last && all_below<kBlock>(src + i, bound); i += kBlock) block(src + i, dst + i);
  return i;
}

// The same of long blocks, and of short ones where no long one is left.
template <int kLong, int kShort, class E, class LongBlock, class ShortBlock>
static inline int32_t blocks_below(const E* src, E* dst, uint32_t bound, int32_t i, int32_t last,
                                   LongBlock long_block, ShortBlock short_block) {
  i = blocks_below<kLong>(src, dst, bound, i, last - (last - i) % kLong, long_block);
  return blocks_below<kShort>(src, dst, bound, i, last, short_block);
}

// The same where an element is computed as any other: element(x, y).
template <int kBlock, class E, class Element>
static inline int32_t elements_below(const E* src, E* dst, uint32_t bound, int32_t i, int32_t last,
                                     Element element) {
  for (; i < last && all_below<kBlock>(src + i, bound); i += kBlock) {
#pragma GCC unroll 4
    for (int lane = 0; lane < kBlock; ++lane) element(src + i + lane, dst + i + lane);
  }
  return i;
}

#endif
