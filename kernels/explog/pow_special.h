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
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) any |= kOutside(y.at(i + lane));
  return any;
}
template <int, auto kOutside, class E>
static inline uint32_t any_outside(OneExponent<E> y, int32_t) {
  return kOutside(y.y);
}

// Of kCount bases: one is not a normal number.
template <int kCount, class E>
static inline uint32_t any_not_normal(const E* x) {
  uint32_t any = 0;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane)
    any |= outside(upper_magnitude(x + lane), Upper<E>::kSmallestNormal, Upper<E>::kInf);
  return any;
}

// Not a positive one.
template <int kCount, class E>
static inline uint32_t any_not_positive(const E* x) {
  uint32_t any = 0;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) any |= outside_positive_normal(x + lane);
  return any;
}

// Whether a finite exponent is a whole number, and its lowest bit as a sign. From 2^21 on doubles
// pass for none, as does 0. The other bits of `odd` mean nothing.
struct Whole {
  bool is;
  uint32_t odd;
};

static inline Whole whole(const float* y) {
  const uint32_t a = upper_magnitude(y), e = (a >> 23) - 127;          // huge below 1
  const uint32_t from_unit = e < 24 ? (a << 8 | kSignUpper) << e : 0;  // its bit is the highest
  return {(e < 128 && from_unit << 1 == 0) || a == 0, from_unit};
}

static inline Whole whole(const double* y) {
  const uint32_t a = upper_magnitude(y), e = (a >> 20) - 1023;
  const uint32_t from_unit = (a << 11 | kSignUpper) << (e & 31);
  return {e < 21 && (from_unit << 1 | load_words(y).lower) == 0, from_unit};
}

// The signs of kCount powers; false where a power of a negative base may have no real value.
template <int kCount, class E>
static inline bool signs_of(const E* x, EachExponent<E> y, int32_t i, uint32_t* sign) {
  bool real = true;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) {
    const Whole exponent = whole(y.at(i + lane));
    const uint32_t word = upper_word(x + i + lane);
    real &= exponent.is | !sign_bit(word);
    sign[lane] = word & exponent.odd & kSignUpper;
  }
  return real;
}

template <int kCount, class E>
static inline bool signs_of(const E* x, OneExponent<E> y, int32_t i, uint32_t* sign) {
  const Whole exponent = whole(y.y);
  const uint32_t odd = exponent.odd & kSignUpper;
  for (int lane = 0; lane < kCount; ++lane) sign[lane] = upper_word(x + i + lane) & odd;
  return exponent.is;
}

static const uint32_t kNoSigns[8] = {};

// Whether the kernels' own steps serve kCount elements: the magnitudes of the bases are normal
// numbers, kOutside says of no exponent that it is too small or too large, and those of negative
// bases are whole. Then the signs of the powers, perhaps in `own`, and null otherwise.
template <int kCount, class E, class Exponent>
__attribute__((noinline)) static const uint32_t* signs_of_negatives(const E* x, Exponent y,
                                                                    int32_t i, uint32_t* own) {
  return !sign_bit(any_not_normal<kCount>(x + i)) && signs_of<kCount>(x, y, i, own) ? own : nullptr;
}

template <int kCount, auto kOutside, class E, class Exponent>
static inline const uint32_t* signs_in_domain(const E* x, Exponent y, int32_t i, uint32_t* own) {
  const uint32_t exponents = any_outside<kCount, kOutside>(y, i);
  if (!sign_bit(exponents | any_not_positive<kCount>(x + i))) return kNoSigns;
  return sign_bit(exponents) ? nullptr : signs_of_negatives<kCount>(x, y, i, own);
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

// Stores x to the power y as element i. `finite(x, y)` gives the power of the magnitude of a finite
// base other than 0, and a finite exponent, rounded once, as a pattern: infinity and zero included.
template <class E, class Finite>
__attribute__((noinline)) static void pow_special(const Arrays<E>& arrays, const E* exponent,
                                                  int32_t i, Status* status, Finite finite) {
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
    const Bits power = finite(arrays.src1 + i, exponent);
    store_bits(dst, sign | power);
    if (power == kInf) _ErrorCall(arrays, LUX_OVERFLOW, i, status);
    if (power == 0) _ErrorCall(arrays, LUX_UNDERFLOW, i, status);
  }
}

#endif
