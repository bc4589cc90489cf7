// SPDX-License-Identifier: MIT
//
// An extended number less a multiple of pi/2, exactly, however large it is.
//
//   |x| <= pi/4   itself
//   otherwise     |x| = m 2^e, m an integer of 64 bits; 288 bits of 2/pi, from the word on whose
//                 predecessors contribute multiples of 4, times m: |x| 2/pi modulo 4. Its upper two
//                 bits are the quadrant; 128 bits of the rest behind its leading zeros, of which
//                 there are about 80 at most, times 128 bits of pi/2 are the angle left.
#include "extended/generated/trig_table.h"
#include "extended/number.h"

constexpr int kWindow = 9, kWords = kWindow + 2, kExact = 4;

static uint32_t high(uint64_t x) { return uint32_t(x >> 32); }

// Zero before the point.
static uint32_t inverse_word(int32_t i) { return i < 0 ? 0 : _nox_inverse_half_pi[i]; }

// to += x y from its word `at` on; the carry goes one word beyond y's.
static void add_product(uint32_t* to, uint32_t x, const uint32_t* y, int count) {
  uint32_t carry = 0;
  for (int i = 0; i < count; ++i) {
    const uint64_t sum = uint64_t(x) * y[i] + to[i] + carry;
    to[i] = uint32_t(sum);
    carry = high(sum);
  }
  to[count] = carry;
}

static void negate(uint32_t* words, int count) {
  uint32_t carry = 1;
  for (int i = 0; i < count; ++i) {
    words[i] = ~words[i] + carry;
    carry &= words[i] == 0;
  }
}

// words <<= bits
static void shift_left(uint32_t* words, int count, int bits) {
  for (int i = count - 1; i >= 0; --i) {
    const int from = i - bits / 32;
    const uint32_t upper = from >= 0 ? words[from] : 0, lower = from > 0 ? words[from - 1] : 0;
    words[i] = uint32_t((uint64_t(upper) << 32 | lower) << (bits % 32) >> 32);
  }
}

static int leading_zeros(const uint32_t* words, int count) {
  int zeros = 0;
  while (count > 1 && words[count - 1] == 0) {
    --count;
    zeros += 32;
  }
  return zeros + __builtin_clz(words[count - 1] | 1);
}

int noxreduce_pi04l(long double x, long double r[2]) {
  const ExtendedParts parts = parts_of(x);
  const int32_t biased = parts.exponent & 0x7FFF;
  const bool negative = parts.exponent >> 15;
  constexpr uint64_t kQuarterPi = 0xC90FDAA22168C234u;  // significand, rounded down
  if (biased < 16382 || (biased == 16382 && parts.significand <= kQuarterPi)) {
    r[0] = x;
    r[1] = 0;
    return 0;
  }
  // Word i of 2/pi times m 2^e is a multiple of 2^(e - 32 (i + 1)): of 4 below the first.
  const int32_t e = biased - 16383 - 63, first = (e - 2) >> 5;
  uint32_t window[kWindow], product[kWords] = {};
  for (int i = 0; i < kWindow; ++i) window[i] = inverse_word(first + kWindow - 1 - i);
  add_product(product, uint32_t(parts.significand), window, kWindow);
  add_product(product + 1, high(parts.significand), window, kWindow);

  // The bits worth 2 and 1 go to the top and round to the nearest quadrant.
  const int32_t point = 32 * (first + kWindow) - e;
  shift_left(product, kWords, 32 * kWords - 2 - point);
  uint32_t& top = product[kWords - 1];
  const uint32_t quadrant = (top + 0x20000000u) >> 30;
  top -= quadrant << 30;
  const bool below = top >> 31;
  if (below) negate(product, kWords);
  const int zeros = leading_zeros(product, kWords);
  shift_left(product, kWords, zeros);

  // [1/2, 1) times pi/2: the product is worth 2^(2 - zeros), its uppermost bit 1 of that.
  uint32_t angle[2 * kExact] = {};
  for (int i = 0; i < kExact; ++i)
    add_product(angle + i, product[kWords - kExact + i], _nox_half_pi, kExact);
  int32_t scale = 2 - zeros;
  if (!(angle[7] >> 31)) {
    shift_left(angle, 2 * kExact, 1);
    --scale;
  }
  const uint64_t head = uint64_t(angle[7]) << 32 | angle[6];
  const uint64_t tail = uint64_t(angle[5]) << 32 | angle[4];  // signed: the head is to nearest
  const long double unit = (below != negative ? -1 : 1) * power_of_two(scale - 63);
  r[0] = ((long double)head + float(tail >> 63)) * unit;
  r[1] = (long double)int64_t(tail) * unit * 0x1p-64f;
  return int((negative ? 0 - quadrant : quadrant) & 3) * 2;
}
