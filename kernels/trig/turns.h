// SPDX-License-Identifier: MIT
//
// Words of 1/(2 pi) for products with integers: what is left of x / (2 pi) without its whole turns.
#ifndef LUX_KERNELS_TRIG_TURNS_H
#define LUX_KERNELS_TRIG_TURNS_H

#include "core/bits.h"
#include "kernels/trig/generated/inverse_two_pi_table.h"

static inline uint64_t product(uint32_t a, uint32_t b) { return uint64_t(a) * b; }
static inline uint32_t high(uint64_t a) { return uint32_t(a >> 32); }

// The first `count` words of 1/(2 pi) 2^(8 byte) modulo 1, the least significant first.
static inline const uint8_t* window_address(int32_t byte, int32_t count) {
  return kInverseTwoPi + kFirstByte + 1 - byte - 4 * count;
}

static inline uint32_t window_word(int32_t byte, int32_t count, int32_t i) {
  uint32_t word;
  __builtin_memcpy(&word, window_address(byte, count) + 4 * i, sizeof word);
  return word;
}

#endif
