// SPDX-License-Identifier: MIT
//
// Rounding to integers on bit patterns. Integer arithmetic only: exact under every precision and
// rounding setting, and no exception is raised.
//
// A magnitude of at least 1 holds its fraction in the low bits of the pattern. Adding a bias below
// the unit bit and cutting the fraction off rounds it, and a carry runs into the exponent as it
// should. Magnitudes below 1 become 0 or 1 by one comparison.
#ifndef LUX_KERNELS_ROUNDING_ROUNDING_H
#define LUX_KERNELS_ROUNDING_ROUNDING_H

#include "core/bits.h"
#include "core/control.h"
#include "kernels/lanes.h"
#include "luxvmk3.h"

// The first four in the encoding of the x87 rounding field.
enum class Direction { kNearestEven, kDown, kUp, kZero, kNearestAway };

// The bits below the unit: for magnitudes below 1, then from 2^0, 2^1, ... on; a spare entry in
// front, for rounding to even looks at both neighbours. Variable shifts of 64-bit patterns are slow
// on this processor class.
template <class E>
struct FractionMasks {
  using F = Format<E>;
  typename F::Bits of[F::kFractionBits + 3];
  constexpr FractionMasks() : of{F::kSign - 1, F::kSign - 1} {
    for (int e = 0; e <= F::kFractionBits; ++e)
      of[e + 2] = ((typename F::Bits(1) << F::kFractionBits) - 1) >> e;
  }
};
template <class E>
static constexpr FractionMasks<E> kFractionMasks{};

template <class E>
struct Rounding : Format<E> {
  using F = Format<E>;
  using Bits = typename F::Bits;
  static constexpr Bits kHalf = F::kOne - (Bits(1) << F::kFractionBits);
  // No fraction from here on: 2^23, 2^52, infinities and NaNs.
  static constexpr Bits kWhole = F::kOne + (Bits(F::kFractionBits) << F::kFractionBits);

  // Only for magnitudes below kWhole, which have these upper words.
  static const Bits* mask_entry(uint32_t upper) {
    const int32_t steps =
        int32_t(upper / upper_of<E>(Bits(1) << F::kFractionBits)) - (F::kBias - 1);
    return &kFractionMasks<E>.of[steps < 0 ? 1 : steps + 1];
  }
};

// All ones where rounding leads away from zero for a number with these upper bits.
template <Direction kDirection>
static inline int32_t away_from_zero(uint32_t upper) {
  const int32_t negative = int32_t(upper) >> 31;
  return kDirection == Direction::kDown ? negative : ~negative;
}

// Whether a magnitude below 1, given by its upper word and the rest, becomes 1; `half` is the upper
// word of 0.5.
template <Direction kDirection>
static inline bool becomes_one(uint32_t upper, uint32_t rest, uint32_t half, int32_t away) {
  switch (kDirection) {
    case Direction::kNearestEven:
      return int32_t(upper) - (rest == 0) >= int32_t(half);
    case Direction::kNearestAway:
      return upper >= half;
    default:
      return ((upper | rest) & away) != 0;
  }
}

// A bias is added to the pattern, then the fraction is cut off; no carry reaches the sign. The bias
// is all of the fraction's bits to round away from zero, half a unit for halves away, and just
// under a half for halves to even, a little more where the unit bit is odd.
template <Direction kDirection>
static inline void round_element(const float* src, float* dst) {
  using R = Rounding<float>;
  const uint32_t x = load_bits(src), a = magnitude<float>(x);
  if (__builtin_expect(a >= R::kWhole, false)) return store_bits(dst, quieted<float>(x));
  const uint32_t* const mask = R::mask_entry(a);
  if (kDirection == Direction::kZero) return store_bits(dst, x & ~mask[0]);

  const int32_t away = away_from_zero<kDirection>(x);
  uint32_t sum = x;
  switch (kDirection) {
    case Direction::kNearestEven:
      sum += mask[1] + ((x & (mask[-1] ^ mask[0])) != 0);
      break;
    case Direction::kNearestAway:
      sum += mask[0] ^ mask[1];
      break;
    default:
      sum += mask[0] & away;
  }
  uint32_t rounded = sum & ~mask[0];
  if (__builtin_expect(a < R::kOne, false))
    rounded = (x & R::kSign) | (becomes_one<kDirection>(a, 0, R::kHalf, away) ? R::kOne : 0);
  store_bits(dst, rounded);
}

// The same by words: 64-bit values would be shuffled through memory. Below 1 the cut leaves nothing
// in the lower word, so that only the upper one has to be chosen.
template <Direction kDirection>
static inline void round_element(const double* src, double* dst) {
  using R = Rounding<double>;
  const Words x = load_words(src);
  const uint32_t a = x.upper & ~kSignUpper;
  if (__builtin_expect(a >= upper_of<double>(R::kWhole), false))
    return store_bits(dst, quieted<double>(load_bits(src)));
  const uint64_t* const mask = R::mask_entry(a);
  const Words cut = load_words(mask);
  if (kDirection == Direction::kZero)
    return store_words(dst, {x.lower & ~cut.lower, x.upper & ~cut.upper});

  const int32_t away = away_from_zero<kDirection>(x.upper);
  Words sum = x;
  switch (kDirection) {
    case Direction::kNearestEven: {
      const Words twice = load_words(mask - 1);
      const bool odd =
          (x.upper & (twice.upper ^ cut.upper)) | (x.lower & (twice.lower ^ cut.lower));
      sum = add_words(add_words(sum, load_words(mask + 1)), {odd, 0});
      break;
    }
    case Direction::kNearestAway: {
      const Words half = load_words(mask + 1);
      sum = add_words(sum, {cut.lower ^ half.lower, cut.upper ^ half.upper});
      break;
    }
    default:
      sum = add_words(sum, {cut.lower & away, cut.upper & away});
  }
  uint32_t upper = sum.upper & ~cut.upper;
  if (__builtin_expect(a < upper_of<double>(R::kOne), false))
    upper = (x.upper & kSignUpper) |
            (becomes_one<kDirection>(a, x.lower, upper_of<double>(R::kHalf), away)
                 ? upper_of<double>(R::kOne)
                 : 0);
  store_words(dst, {sum.lower & ~cut.lower, upper});
}

template <Direction kDirection, class E>
static inline void round_elements(const E* src, E* dst, int32_t len) {
  for (const E* const end = src + len; src != end; ++src, ++dst)
    round_element<kDirection>(src, dst);
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

// The integer part in one store of the element's size: the x87 unit loads it next, and a load that
// spans two stores has to wait for both.
static inline void store_cut(float* to, const float* x, const uint32_t* mask) {
  store_bits(to, load_bits(x) & ~*mask);
}

static inline void store_cut(double* to, const double* x, const uint64_t* mask) {
  store_half(to, _mm_andnot_ps(load_half(mask), load_half(x)));
}

// The fraction is exact at 64-bit precision; a zero takes the sign of x from the pattern.
template <class E>
static inline Status split_array(const E* src, E* whole, E* fraction, int32_t len) {
  using R = Rounding<E>;
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !whole || !fraction) return LUX_NULL_POINTER;
  const uint16_t caller = x87_enter(X87_EXTENDED);
  for (const E* const end = src + len; src != end; ++src, ++whole, ++fraction) {
    const uint32_t upper = upper_word(src), a = upper & ~kSignUpper;
    if (__builtin_expect(a >= upper_of<E>(R::kWhole), false)) {
      const typename R::Bits x = load_bits(src);
      store_bits(whole, quieted<E>(x));
      store_bits(fraction, magnitude<E>(x) > R::kInf ? quieted<E>(x) : x & R::kSign);
    } else {
      const long double value = load_extended(src);
      store_cut(whole, src, R::mask_entry(a));
      in_memory(fraction) = E(value - load_extended(whole));
      set_upper_bits(fraction, upper & kSignUpper);
    }
  }
  x87_leave(caller, X87_EXTENDED);
  return LUX_OK;
}

#endif
