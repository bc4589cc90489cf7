// SPDX-License-Identifier: MIT
//
// Sums of two extended numbers, and their quotient rounded once.
#ifndef LUX_SCALAR_SUM_H
#define LUX_SCALAR_SUM_H

struct Sum {
  long double high, low;
};

// a + b exactly, |a| >= |b|.
static inline Sum exact_sum(long double a, long double b) {
  const long double high = a + b;
  return {high, (a - high) + b};
}

// The leading 32 bits, to nearest.
static inline long double leading_half(long double x) {
  const long double scaled = x * 0x1.00000001p32L;
  return scaled - (scaled - x);
}

// a / b: 32 bits of it, whose products with halves of b are exact, and the rest.
static inline long double quotient(const Sum& a, const Sum& b) {
  const long double head = leading_half(a.high / b.high), half = leading_half(b.high);
  const long double rest =
      ((a.high - head * half) - head * (b.high - half)) + (a.low - head * b.low);
  return head + rest / b.high;
}

#endif
