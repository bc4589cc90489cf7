// SPDX-License-Identifier: MIT
//
// Bit patterns of the floating-point formats, and stores that really round.
#ifndef LUX_CORE_BITS_H
#define LUX_CORE_BITS_H

#include <stddef.h>
#include <stdint.h>

// Unsigned pattern of an element type, and the constants of its layout.
template <class E>
struct Format;

template <>
struct Format<float> {
  using Bits = uint32_t;
  static constexpr int kFractionBits = 23;
  static constexpr int kBias = 127;
  static constexpr Bits kSign = 0x80000000u;
  static constexpr Bits kInf = 0x7F800000u;
  static constexpr Bits kOne = 0x3F800000u;
  static constexpr Bits kQuiet = 0x00400000u;
};

template <>
struct Format<double> {
  using Bits = uint64_t;
  static constexpr int kFractionBits = 52;
  static constexpr int kBias = 1023;
  static constexpr Bits kSign = 0x8000000000000000u;
  static constexpr Bits kInf = 0x7FF0000000000000u;
  static constexpr Bits kOne = 0x3FF0000000000000u;
  static constexpr Bits kQuiet = 0x0008000000000000u;
};

// Patterns travel between memory and integer registers only: a signalling NaN that passes through
// the x87 unit comes out quiet and raises invalid.
template <class E>
static inline typename Format<E>::Bits load_bits(const E* from) {
  typename Format<E>::Bits pattern;
  __builtin_memcpy(&pattern, from, sizeof pattern);
  return pattern;
}

template <class E>
static inline void store_bits(E* to, typename Format<E>::Bits pattern) {
  __builtin_memcpy(to, &pattern, sizeof pattern);
}

template <class E>
static inline typename Format<E>::Bits magnitude(typename Format<E>::Bits pattern) {
  return pattern & ~Format<E>::kSign;
}

// A NaN quieted, its sign and payload kept; everything else as it is.
template <class E>
static inline typename Format<E>::Bits quieted(typename Format<E>::Bits pattern) {
  return magnitude<E>(pattern) > Format<E>::kInf ? pattern | Format<E>::kQuiet : pattern;
}

// An x87 register holds more than its C++ type says. Passing through memory rounds to the type.
static inline float store_f32(float value) {
  asm volatile("" : "+m"(value));
  return value;
}

static inline double store_f64(double value) {
  asm volatile("" : "+m"(value));
  return value;
}

// 2^exponent for -16382 <= exponent <= 16383.
static inline long double power_of_two(int32_t exponent) {
  union {
    struct {
      uint64_t significand;
      uint16_t exponent;
    } parts;
    long double value;
  } x = {{0x8000000000000000u, uint16_t(exponent + 16383)}};
  return x.value;
}

#endif
