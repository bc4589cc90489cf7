// SPDX-License-Identifier: MIT
//
// Rounding to integers on bit patterns. Integer arithmetic only: exact under every precision and
// rounding setting, and no exception is raised.
//
// A magnitude of at least 1 holds its fraction in the low bits of the pattern. Adding a bias below
// the unit bit and cutting the fraction off rounds it, and a carry runs into the exponent as it
// should. Magnitudes below 1 become 0 or 1 by one comparison.
#ifndef LUX_KERNELS_ARITH_ROUNDING_H
#define LUX_KERNELS_ARITH_ROUNDING_H

#include "core/bits.h"
#include "core/control.h"
#include "luxvmk3.h"

// The first four in the encoding of the x87 rounding field.
enum class Direction { kNearestEven, kDown, kUp, kZero, kNearestAway };

template <class E>
struct Rounding : Format<E> {
  using F = Format<E>;
  using Bits = typename F::Bits;
  static constexpr Bits kHalf = F::kOne - (Bits(1) << F::kFractionBits);
  // No fraction from here on: 2^23, 2^52, infinities and NaNs.
  static constexpr Bits kWhole = F::kOne + (Bits(F::kFractionBits) << F::kFractionBits);

  // The bits below the unit of a magnitude from 1 on; any value below 1.
  static Bits fraction_mask(Bits a) {
    const int exponent = int(a >> F::kFractionBits) - F::kBias;
    return ((Bits(1) << F::kFractionBits) - 1) >> (exponent & (sizeof(Bits) * 8 - 1));
  }

  template <Direction kDirection>
  static Bits apply(Bits x) {
    const Bits a = magnitude<E>(x), sign = x ^ a;
    if (__builtin_expect(a >= kWhole, false)) return quieted<E>(x);
    const Bits fraction = fraction_mask(a);
    const bool away =
        (kDirection == Direction::kDown && sign) || (kDirection == Direction::kUp && !sign);
    Bits bias, becomes_one;  // magnitudes below 1 become 1 from becomes_one on
    switch (kDirection) {
      case Direction::kNearestEven:
        // Just under a half, and a little more where the unit bit is odd.
        bias = (fraction >> 1) + ((a & (fraction + 1)) != 0);
        becomes_one = kHalf + 1;
        break;
      case Direction::kNearestAway:
        bias = (fraction + 1) >> 1;
        becomes_one = kHalf;
        break;
      default:
        bias = away ? fraction : 0;
        becomes_one = away ? 1 : F::kOne;
    }
    const Bits rounded = (a + bias) & ~fraction;
    const Bits small = a >= becomes_one ? F::kOne : 0;
    return sign | (a < F::kOne ? small : rounded);
  }
};

template <Direction kDirection, class E>
static inline void round_elements(const E* src, E* dst, int32_t len) {
  for (int32_t i = 0; i < len; ++i)
    store_bits(dst + i, Rounding<E>::template apply<kDirection>(load_bits(src + i)));
}

template <Direction kDirection, class E>
static inline Status round_array(const E* src, E* dst, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !dst) return LUX_NULL_POINTER;
  round_elements<kDirection>(src, dst, len);
  return LUX_OK;
}

// In the caller's rounding direction. Checks nothing and returns the loop count.
template <class E>
static inline Status round_as_caller(const E* src, E* dst, int32_t len) {
  if (len < 1) return 0;
  switch (Direction(x87_control() >> 10 & 3)) {
    case Direction::kDown:
      round_elements<Direction::kDown>(src, dst, len);
      break;
    case Direction::kUp:
      round_elements<Direction::kUp>(src, dst, len);
      break;
    case Direction::kZero:
      round_elements<Direction::kZero>(src, dst, len);
      break;
    default:
      round_elements<Direction::kNearestEven>(src, dst, len);
  }
  return len;
}

// The fraction is a difference of close numbers, exact at 64-bit precision.
template <class E>
static inline Status split_array(const E* src, E* whole, E* fraction, int32_t len) {
  using F = Format<E>;
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !whole || !fraction) return LUX_NULL_POINTER;
  const uint16_t caller = x87_enter(X87_EXTENDED);
  for (int32_t i = 0; i < len; ++i) {
    const typename F::Bits x = load_bits(src + i), a = magnitude<E>(x), sign = x ^ a;
    const typename F::Bits integer = Rounding<E>::template apply<Direction::kZero>(x);
    if (a > F::kInf || integer == x) {
      store_bits(whole + i, integer);
      store_bits(fraction + i, a > F::kInf ? integer : sign);
    } else if (a < F::kOne) {
      store_bits(fraction + i, x);
      store_bits(whole + i, sign);
    } else {
      const long double value = src[i];
      store_bits(whole + i, integer);
      fraction[i] = E(value - whole[i]);
    }
  }
  x87_leave(caller, X87_EXTENDED);
  return LUX_OK;
}

#endif
