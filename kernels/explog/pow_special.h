// SPDX-License-Identifier: MIT
//
// Powers of one element with every special case of C's Annex F, for both element types.
#ifndef LUX_KERNELS_EXPLOG_POW_SPECIAL_H
#define LUX_KERNELS_EXPLOG_POW_SPECIAL_H

#include "kernels/frame.h"
#include "kernels/screens.h"

// Where the exponent of element i stands: in an array, or once for all.
template <class E>
struct EachExponent {
  const E* y;
  const E* at(int32_t i) const { return y + i; }
};

template <class E>
struct OneExponent {
  const E* y;
  const E* at(int32_t) const { return y; }
};

// A screen's word for exponents, joined.
template <int kCount, auto kOutside, class E>
static inline uint32_t any_outside(EachExponent<E> y, int32_t i) {
  uint32_t any = 0;
  for (int lane = 0; lane < kCount; ++lane) any |= kOutside(y.at(i + lane));
  return any;
}
template <int, auto kOutside, class E>
static inline uint32_t any_outside(OneExponent<E> y, int32_t) {
  return kOutside(y.y);
}

// Whether the kernels' own steps serve kCount elements: the bases are positive normal numbers, and
// kOutside says of no exponent that it is too small or too large.
template <int kCount, auto kOutside, class E, class Exponent>
static inline bool in_domain(const E* x, Exponent y, int32_t i) {
  uint32_t any = any_outside<kCount, kOutside>(y, i);
  for (int lane = 0; lane < kCount; ++lane) any |= outside_positive_normal(x + i + lane);
  return !sign_bit(any);
}

enum class Parity { kNoInteger, kEven, kOdd };

// Of a finite magnitude other than 0.
template <class E>
static inline Parity parity(typename Format<E>::Bits a) {
  constexpr int kFractionBits = Format<E>::kFractionBits;
  const int exponent = int(a >> kFractionBits) - Format<E>::kBias;
  if (exponent < 0) return Parity::kNoInteger;
  if (exponent > kFractionBits) return Parity::kEven;
  // The implicit bit stands above the fraction; the exponent field must not be shifted in.
  const auto one = typename Format<E>::Bits(1);
  const auto significand = (a & Format<E>::kFraction) | one << kFractionBits;
  const auto unit = one << (kFractionBits - exponent);
  if (significand & (unit - 1)) return Parity::kNoInteger;
  return significand & unit ? Parity::kOdd : Parity::kEven;
}

// Stores x to the power y as element i. `finite(magnitude of x, y)` gives the power of a finite
// positive base and a finite exponent, rounded once, as a pattern: infinity and zero included.
template <class E, class Finite>
static inline void pow_special(const Arrays<E>& arrays, const E* exponent, int32_t i,
                               Status* status, Finite finite) {
  using Bits = typename Format<E>::Bits;
  constexpr Bits kInf = Format<E>::kInf, kOne = Format<E>::kOne, kSign = Format<E>::kSign;
  const Bits x = load_bits(arrays.src1 + i), y = load_bits(exponent);
  const Bits a = magnitude<E>(x), b = magnitude<E>(y);
  E* const dst = arrays.dst1 + i;
  if (b == 0 || x == kOne) return store_bits(dst, kOne);
  if (a > kInf || b > kInf) return store_bits(dst, quieted<E>(a > kInf ? x : y));

  const bool falling = y != b;  // the exponent is negative
  if (b == kInf) {
    if (a == kOne) return store_bits(dst, kOne);
    return store_bits(dst, (a > kOne) == falling ? 0 : kInf);
  }
  const Parity kind = parity<E>(b);
  const Bits sign = kind == Parity::kOdd ? x & kSign : 0;
  if (a == 0 || a == kInf) {
    store_bits(dst, sign | ((a == 0) == falling ? kInf : 0));
    if (a == 0 && falling) _ErrorCall(arrays, LUX_POLE, i, status);
  } else if (x != a && kind == Parity::kNoInteger) {
    store_bits(dst, Format<E>::kDefaultNaN);
    _ErrorCall(arrays, LUX_DOMAIN, i, status);
  } else {
    const Bits power = finite(a, exponent);
    store_bits(dst, sign | power);
    if (power == kInf) _ErrorCall(arrays, LUX_OVERFLOW, i, status);
    if (power == 0) _ErrorCall(arrays, LUX_UNDERFLOW, i, status);
  }
}

#endif
