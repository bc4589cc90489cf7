// SPDX-License-Identifier: MIT
//
// Positive numbers below 2^32 with 224 bits after the point, in integer arithmetic: for the few
// results that stand so near the middle between two singles that 64 bits leave the nearest one open.
// Every operation cuts off; one is off by less than 2^-220 of numbers below 4.
#ifndef LUX_KERNELS_LONG_NUMBER_H
#define LUX_KERNELS_LONG_NUMBER_H

#include "core/bits.h"
#include "core/generated/long_number_table.h"  // LongNumber, kLongLn2, kLongHalfPi

constexpr int kWords = 8;

static inline LongNumber operator*(const LongNumber& a, const LongNumber& b) {
  uint32_t sum[2 * kWords] = {};
  for (int i = kWords - 1; i >= 0; --i) {
    uint64_t carry = 0;
    for (int k = kWords - 1; k >= 0; --k) {
      carry += uint64_t(a.word[i]) * b.word[k] + sum[i + k + 1];
      sum[i + k + 1] = uint32_t(carry);
      carry >>= 32;
    }
    sum[i] = uint32_t(carry);
  }
  LongNumber product;
  for (int i = 0; i < kWords; ++i) product.word[i] = sum[i + 1];
  return product;
}

static inline void multiply(LongNumber* a, uint32_t by) {
  uint64_t carry = 0;
  for (int i = kWords - 1; i >= 0; --i) {
    carry += uint64_t(a->word[i]) * by;
    a->word[i] = uint32_t(carry);
    carry >>= 32;
  }
}

static inline void divide(LongNumber* a, uint32_t by) {
  uint32_t rest = 0;
  for (uint32_t& word : a->word)
    asm("divl %2" : "=a"(word), "=d"(rest) : "rm"(by), "0"(word), "1"(rest) : "cc");
}

// a - b, b not larger.
static inline LongNumber operator-(LongNumber a, const LongNumber& b) {
  uint32_t borrowed = 0;
  for (int i = kWords - 1; i >= 0; --i) {
    const uint64_t difference = uint64_t(a.word[i]) - b.word[i] - borrowed;
    a.word[i] = uint32_t(difference);
    borrowed = uint32_t(difference >> 63);
  }
  return a;
}

static inline void half(LongNumber* a) {
  for (int i = kWords - 1; i >= 0; --i)
    a->word[i] = a->word[i] >> 1 | (i ? a->word[i - 1] << 31 : 0);
}

// Of one that is not 0 the leading 63 bits and one below: its neighbour among 63-bit numbers is
// never the nearest, so a single or the middle of two is on the same side as of the number itself.
static inline long double on_its_side(LongNumber a) {
  int32_t exponent = 0;
  for (; a.word[0] == 0; --exponent) multiply(&a, 2);
  for (; a.word[0] != 1; ++exponent) half(&a);
  const uint64_t fraction = uint64_t(a.word[1]) << 31 | a.word[2] >> 1 | 1;
  const uint32_t halves[2] = {uint32_t(fraction >> 32), uint32_t(fraction)};
  return ((long double)halves[0] * 0x1p+32f + halves[1]) * power_of_two(exponent - 63) +
         power_of_two(exponent);
}

#endif
