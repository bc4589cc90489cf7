// SPDX-License-Identifier: MIT
//
// Numbers of about 126 bits as the sum of two extended ones, the second at most half a unit of the
// first one's last place. The x87 unit must be at 64-bit precision, rounding to nearest.
//
// Relative errors: product 2^-125, sum 2^-126 also where it cancels, quotient 2^-123.
#ifndef LUX_EXTENDED_TWO_PART_H
#define LUX_EXTENDED_TWO_PART_H

// An entry of a table, to 106 bits.
struct DoublePair {
  double high, low;
};

struct TwoPart {
  long double high, low;
};

// a + b exactly, |a| >= |b|.
static inline TwoPart ordered_sum(long double a, long double b) {
  const long double sum = a + b;
  return {sum, b - (sum - a)};
}

// a + b exactly.
static inline TwoPart exact_sum(long double a, long double b) {
  const long double sum = a + b, b_in_sum = sum - a;
  return {sum, (a - (sum - b_in_sum)) + (b - b_in_sum)};
}

// a b exactly, by halves of 32 bits; |a| and |b| below 2^16350.
static inline TwoPart exact_product(long double a, long double b) {
  constexpr long double kSplitter = 0x1p32L + 1;
  const long double product = a * b;
  const long double ca = kSplitter * a, ah = ca - (ca - a), al = a - ah;
  const long double cb = kSplitter * b, bh = cb - (cb - b), bl = b - bh;
  return {product, ((ah * bh - product) + ah * bl + al * bh) + al * bl};
}

// a + b where b is so much smaller that no more than a few bits cancel.
static inline TwoPart ordered_sum(const TwoPart& a, const TwoPart& b) {
  const TwoPart sum = ordered_sum(a.high, b.high);
  return ordered_sum(sum.high, sum.low + (a.low + b.low));
}

static inline TwoPart operator+(const TwoPart& a, const TwoPart& b) {
  const TwoPart high = exact_sum(a.high, b.high), low = exact_sum(a.low, b.low);
  const TwoPart sum = ordered_sum(high.high, high.low + low.high);
  return ordered_sum(sum.high, sum.low + low.low);
}

static inline TwoPart operator-(const TwoPart& a) { return {-a.high, -a.low}; }

static inline TwoPart operator*(const TwoPart& a, const TwoPart& b) {
  const TwoPart product = exact_product(a.high, b.high);
  return ordered_sum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

static inline TwoPart operator*(const TwoPart& a, long double b) {
  const TwoPart product = exact_product(a.high, b);
  return ordered_sum(product.high, product.low + a.low * b);
}

static inline TwoPart operator/(const TwoPart& a, const TwoPart& b) {
  const long double quotient = a.high / b.high;
  const TwoPart rest = a + -(b * quotient);
  return ordered_sum(quotient, rest.high / b.high);
}

// The leading 32 bits, to nearest.
static inline long double leading_half(long double x) {
  const long double scaled = x * 0x1.00000001p32L;
  return scaled - (scaled - x);
}

// a / b rounded once: 32 bits of it, whose products with halves of b are exact, and the rest.
static inline long double rounded_quotient(const TwoPart& a, const TwoPart& b) {
  const long double head = leading_half(a.high / b.high), half = leading_half(b.high);
  const long double rest =
      ((a.high - head * half) - head * (b.high - half)) + (a.low - head * b.low);
  return head + rest / b.high;
}

#endif
