// SPDX-License-Identifier: MIT
//
// The fields of an extended number and small steps that its functions and the complex ones share.
// They want the x87 unit at 64-bit precision, rounding to nearest.
#ifndef LUX_EXTENDED_NUMBER_H
#define LUX_EXTENDED_NUMBER_H

#include "core/bits.h"
#include "luxvmk3_scalar.h"

constexpr long double kExtendedInfinity = __builtin_infl();

// ---- Fields

struct ExtendedParts {
  uint64_t significand;
  uint16_t exponent;  // and sign

  bool is_special() const { return (exponent & 0x7FFF) == 0x7FFF; }
  bool is_nan() const { return is_special() && significand != 0x8000000000000000u; }
};

static inline ExtendedParts parts_of(long double x) {
  ExtendedParts parts;
  __builtin_memcpy(&parts.significand, &x, 8);
  __builtin_memcpy(&parts.exponent, reinterpret_cast<const char*>(&x) + 8, 2);
  return parts;
}

// As it lies in memory.
struct ExtendedWords {
  uint32_t lower, upper;
  uint16_t exponent;  // and sign
} __attribute__((may_alias));

// |x| < 2^exponent.
static inline bool is_below(long double x, int32_t exponent) {
  return (parts_of(x).exponent & 0x7FFF) < 16383 + exponent;
}

// Below, the functions that are odd give their argument and those that are 1 at 0 give 1: the next
// term is less than 2^-16 units, and formed from the smallest numbers it would underflow.
constexpr int32_t kTinyExponent = -40;
static inline bool is_tiny(long double x) { return is_below(x, kTinyExponent); }

// x = m 2^exponent with m in [1, 2).
struct Significand {
  long double m;
  int32_t exponent;
};

static inline long double nearest_whole(long double x) {
  asm("frndint" : "+t"(x));
  return x;
}

[[maybe_unused]] __attribute__((noinline)) static Significand significand_of(long double x) {
  Significand parts;
  asm("fxtract\n\tfxch" : "=t"(x), "=u"(parts.m) : "0"(x));
  parts.exponent = nearest_integer(x);
  return parts;
}

// value 2^exponent, rounded once where that is subnormal; any exponent.
static inline long double scaled_extended(long double value, int32_t exponent) {
  if (exponent > 16000) {
    value *= power_of_two(16000);
    exponent = exponent > 32000 ? 16000 : exponent - 16000;
  } else if (exponent < -16000) {
    value *= power_of_two(-16000);
    exponent = exponent < -32000 ? -16000 : exponent + 16000;
  }
  return value * power_of_two(exponent);
}

// ---- Results that raise a flag

// A NaN itself, otherwise the default NaN and invalid: x - x is zero or, of an infinity, a NaN
// already.
static inline long double invalid(long double x) { return (x - x) / (x - x); }

static inline long double squared_at_run_time(long double x) {
  asm volatile("" : "+t"(x));
  return x * x;
}
static inline long double overflow() { return squared_at_run_time(0x1p16383L); }
static inline long double underflow() { return squared_at_run_time(0x1p-16382L); }

// ---- Square roots

// Correctly rounded, by the processor.
static inline long double processor_root(long double x) {
  asm("fsqrt" : "+t"(x));
  return x;
}

// 1 / sqrt(*x) of a positive finite number. A very small or large *x comes back scaled, as its
// caller expects.
extern "C" long double __invsqrtl(long double* x);

#endif
