// SPDX-License-Identifier: MIT
//
// The single nearest to a power, where doubles leave it open:
//
//   short powers        which are numbers of 25 bits, among them every middle of two singles: the
//                       double, off by less than 2^-35 of it, is rounded to 26 bits
//   by pow_extended.h   off by at most 2^-61.9 of the power (sampled), 2^-60 allowed: one of 2^35
//                       is left open
//   all others          in integers of 224 bits
//
// x^y, x = X 2^a with X odd, is a number of 25 bits only if it is a power of two; or if y = n / 2^k is
// positive and X = N^(2^k), a a multiple of 2^k: roots of rational numbers are rational or irrational.
// Then N^n < 2^25, so that n <= 15 and k <= 3. Other powers are irrational or longer numbers. There
// are fewer than 2^62 pairs of operands with powers in the range, and powers of 2^-64 of them are
// within 2^-88 of the middle of two singles; that one is within 2^-150, the error of the integers, has
// the chance 2^-62.
#include "kernels/explog/nearest_power.h"

#include "kernels/explog/pow_extended.h"
#include "kernels/long_number.h"

// Significand and exponent of a finite magnitude that is not 0, the significand odd.
struct OddParts {
  uint32_t odd;
  int32_t exponent;
};

static OddParts odd_parts(uint32_t magnitude) {
  using Single = Format<float>;
  const uint32_t field = magnitude >> Single::kFractionBits;
  const uint32_t significand =
      (magnitude & Single::kFraction) | (field ? Single::kSmallestNormal : 0);
  const int32_t zeros = __builtin_ctz(significand);
  const int32_t exponent = int32_t(field ? field : 1) - Single::kBias - Single::kFractionBits;
  return {significand >> zeros, exponent + zeros};
}

// Of whole numbers up to 2^24; 0 if it is none.
static uint32_t root_of(uint32_t square) {
  long double root = square;
  asm("fsqrt" : "+t"(root));
  const uint32_t whole = uint32_t(nearest_integer(root));
  return whole * whole == square ? whole : 0;
}

// Whether the power is a number of 25 bits.
static bool is_short_power(uint32_t x, uint32_t y) {
  auto [base, base_exponent] = odd_parts(magnitude<float>(x));
  auto [n, exponent] = odd_parts(magnitude<float>(y));
  for (; exponent < 0; ++exponent) {
    if (base_exponent & 1) return false;
    base_exponent /= 2;
    base = root_of(base);
    if (base == 0 || (base == 1 && base_exponent == 0)) return base != 0;
  }
  if (base == 1) return true;
  if (y & Format<float>::kSign || exponent > 3 || n << exponent > 15) return false;
  uint64_t power = 1;
  for (n <<= exponent; n > 0 && power < 1 << 25; --n) power *= base;
  return power < 1 << 25;
}

// The fraction of the logarithm of a significand of 24 bits, to 2^-192.
static LongNumber log2_fraction(uint32_t significand) {
  LongNumber m = {{1, significand << 9}}, log = {};
  for (int bit = 0; bit < 192; ++bit) {
    m = m * m;
    if (m.word[0] < 2) continue;
    half(&m);
    log.word[1 + bit / 32] |= 0x80000000u >> bit % 32;
  }
  return log;
}

// 2^(t - its whole part): the exponential's series of a 256th, and squares.
static LongNumber exp2_fraction(LongNumber t) {
  constexpr int kTerms = 20, kSquares = 8;
  constexpr LongNumber kOne = {{1}};
  t.word[0] = 0;
  LongNumber r = t * kLongLn2;
  for (int i = 0; i < kSquares; ++i) half(&r);
  LongNumber power = kOne;
  for (uint32_t k = kTerms; k > 0; --k) {
    power = r * power;
    divide(&power, k);
    ++power.word[0];
  }
  for (int i = 0; i < kSquares; ++i) power = power * power;
  return power;
}

// On the side of every single, and of every middle of two, where the power is. The base is not 1, the
// logarithm of the power at most 160, the power no short one.
static long double long_power(uint32_t x, uint32_t y) {
  const auto [base, base_exponent] = odd_parts(magnitude<float>(x));
  const auto [n, exponent] = odd_parts(magnitude<float>(y));
  const int32_t shift = __builtin_clz(base) - 8, e = base_exponent + 23 - shift;
  LongNumber t = log2_fraction(base << shift);
  if (e < 0) {
    const LongNumber whole = {{uint32_t(-e)}};
    t = whole - t;
  } else {
    t.word[0] = uint32_t(e);
  }
  multiply(&t, n);
  for (int32_t i = 0; i < exponent; ++i) multiply(&t, 2);
  for (int32_t i = 0; i > exponent; --i) half(&t);
  int32_t whole = int32_t(t.word[0]);
  if ((e < 0) != (y >> 31)) {
    const LongNumber above = {{t.word[0] + 1}};
    t = above - t;
    whole = -whole - 1;
  }
  return on_its_side(exp2_fraction(t)) * power_of_two(whole);
}

// At 53-bit precision.
static inline double rounded_to_26_bits(double x) {
  const double large = store_f64(x * 0x8000001p+0);
  return store_f64(large - store_f64(large - x));
}

static float nearest_long_power(const float* x, const float* y) {
  constexpr float kError = 0x1p-60f;
  double base, exponent;
  float nearest, other;
  put(&base, load_extended(x));
  put(&exponent, load_extended(y));
  const X87Nearest<X87_EXTENDED> control;
  const long double power = extended_pow(&base, &exponent), error = power * kError;
  put(&nearest, power + error);
  put(&other, power - error);
  if (load_bits(&nearest) != load_bits(&other))
    put(&nearest, long_power(load_bits(x), load_bits(y)));
  control.leave();
  return nearest;
}

uint32_t noxs_nearest_power(const float* x, const float* y, double about) {
  float nearest;
  if (is_short_power(load_bits(x), load_bits(y)))
    put(&nearest, rounded_to_26_bits(about));
  else
    nearest = nearest_long_power(x, y);
  return load_bits(&nearest);
}
