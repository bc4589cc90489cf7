// SPDX-License-Identifier: MIT
//
// Rounding to integers, exact whatever the caller's control words say, and without a flag raised.
//
//   singles   four lanes, or one, under control words of the kernel's own: adding 2^23 to a magnitude
//             and taking it away again rounds to nearest, ties to even; one comparison mends the
//             other directions
//   doubles   blocks of four on the x87 unit: adding 1.5 2^63 rounds in the direction of the control
//             word; blocks that hold magnitudes from 2^57 on, infinities or NaNs, and the rest of an
//             array, one by one on bit patterns; an integer part beside a fraction is cut by a mask,
//             and the unit subtracts it
//
// Every result has the sign bit of its argument.
#ifndef LUX_KERNELS_ROUNDING_ROUNDING_H
#define LUX_KERNELS_ROUNDING_ROUNDING_H

#include "core/bits.h"
#include "core/control.h"
#include "core/wide_walk.h"
#include "kernels/lanes.h"
#include "luxvmk3.h"

// The first four in the encoding of the x87 rounding field.
enum class Direction { kNearestEven, kDown, kUp, kZero, kNearestAway };

// The bits below the unit: for magnitudes below 1, then from 2^0, 2^1, ... on; a spare entry in
// front, for rounding to even looks at both neighbours. Variable shifts of 64-bit patterns are slow
// on this processor class.
struct FractionMasks {
  using F = Format<double>;
  static constexpr int kLast = 57;
  uint64_t of[kLast + 3];
  constexpr FractionMasks() : of{F::kSign - 1, F::kSign - 1} {
    for (int e = 0; e <= kLast; ++e) of[e + 2] = ((uint64_t(1) << F::kFractionBits) - 1) >> e;
  }

  // Only for magnitudes below 2^57, which have these upper words.
  const uint64_t* entry(uint32_t upper) const {
    const int32_t steps = int32_t(upper >> 20) - (F::kBias - 1);
    return &of[steps < 0 ? 1 : steps + 1];
  }
};
inline constexpr FractionMasks kFractionMasks;

// Upper words. No double has a fraction from 2^52 on.
constexpr uint32_t kHalf = Upper<double>::kOne - (1 << 20);
constexpr uint32_t kWhole = Upper<double>::kOne + (52 << 20);

// ---- Doubles one by one

// All ones where rounding leads away from zero for a number with these upper bits.
template <Direction kDirection>
static inline int32_t away_from_zero(uint32_t upper) {
  const int32_t negative = int32_t(upper) >> 31;
  return kDirection == Direction::kDown ? negative : ~negative;
}

// Whether a magnitude below 1, given by its words, becomes 1.
template <Direction kDirection>
static inline bool becomes_one(uint32_t upper, uint32_t lower, int32_t away) {
  switch (kDirection) {
    case Direction::kNearestEven:
      return int32_t(upper) - (lower == 0) >= int32_t(kHalf);
    case Direction::kNearestAway:
      return upper >= kHalf;
    default:
      return ((upper | lower) & away) != 0;
  }
}

// A magnitude of at least 1 holds its fraction in the low bits of the pattern. A bias is added to the
// pattern, then the fraction is cut off; a carry runs into the exponent as it should, and none
// reaches the sign. The bias is all of the fraction's bits to round away from zero, half a unit for
// halves away, and just under a half for halves to even, a little more where the unit bit is odd.
// Magnitudes below 1 become 0 or 1 by one comparison; the cut leaves nothing in the lower word, so
// that only the upper one has to be chosen.
//
// By words: 64-bit values would be shuffled through memory.
template <Direction kDirection>
static inline void round_element(const double* src, double* dst) {
  const Words x = load_words(src);
  const uint32_t a = x.upper & ~kSignUpper;
  if (a >= kWhole) return store_bits(dst, quieted<double>(load_bits(src)));
  const uint64_t* const mask = kFractionMasks.entry(a);
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
  if (a < Upper<double>::kOne)
    upper = (x.upper & kSignUpper) |
            (becomes_one<kDirection>(a, x.lower, away) ? Upper<double>::kOne : 0);
  store_words(dst, {sum.lower & ~cut.lower, upper});
}

// ---- Doubles in blocks

constexpr int32_t kBlock = 4;

// The x87 unit at 64-bit precision with nothing trapping, and the caller's word and flags put back.
// An exception that the caller has pending and unmasked would trap at the first operation: then
// there is no unit to work with.
class SilentX87 {
 public:
  bool ready() const { return !(status_ & kPending); }

  void enter(uint16_t rounding) const {
    x87_load((caller_ & ~(kX87Control | kX87Flags)) | kX87Flags | X87_EXTENDED | rounding);
  }

  void leave() const {
    if ((x87_status() & kX87Flags) != (status_ & kX87Flags)) {
      X87Environment environment = x87_take_environment();
      environment.control = caller_;
      environment.status = status_;
      x87_put_environment(environment);
    } else {
      x87_load(caller_);
    }
  }

 private:
  static constexpr uint16_t kPending = 0x0080;
  uint16_t caller_ = x87_control(), status_ = x87_status();
};

// Compares powers of two, zero and infinity only: that raises no flag and depends on no setting.
static inline bool all_below_2_57(const double* four) {
  const __m128 upper =
      _mm_shuffle_ps(load_pair(four), load_pair(four + 2), _MM_SHUFFLE(3, 1, 3, 1));
  const __m128 exponents = _mm_and_ps(upper, all_lanes(Format<float>::kInf));
  return in_all_lanes(_mm_cmplt_ps(exponents, all_lanes(0x43800000u)));
}

// Integers are one unit of these numbers' last place apart, and they are far above every double of a
// block, so sums keep their exponent. A shifter with the sign of x makes the unit's direction toward
// zero be that of x.
static const float kShifters[2] = {0x1.8p+63f, -0x1.8p+63f}, kHalves[2] = {0.5f, -0.5f};

template <Direction kDirection>
static inline long double shifted(const double* x) {
  constexpr bool kDirected =
      kDirection != Direction::kZero && kDirection != Direction::kNearestAway;
  const uint32_t sign = kDirected ? 0 : upper_word(x) >> 31;
  long double sum = in_memory(x);
  if (kDirection == Direction::kNearestAway) sum += kHalves[sign];
  return (sum + kShifters[sign]) - kShifters[sign];
}

template <Direction kDirection>
constexpr uint16_t kRoundingField = kDirection == Direction::kNearestAway
                                        ? 0x0C00
                                        : uint16_t(kDirection) << 10;

// The results' signs come last, by packed logic on what was stored.
struct Signs {
  __m128 of[kBlock / 2];
};

static inline __m128 sign_bits() {
  alignas(16) static const uint64_t kSigns[2] = {Format<double>::kSign, Format<double>::kSign};
  return _mm_load_ps(reinterpret_cast<const float*>(kSigns));
}

static inline Signs signs_of(const double* x) {
  return {_mm_and_ps(sign_bits(), load_pair(x)), _mm_and_ps(sign_bits(), load_pair(x + 2))};
}

static inline void store_with_signs(double* to, const double* magnitudes, const Signs& signs) {
#pragma GCC unroll 2
  for (int k = 0; k < kBlock; k += 2) {
    const __m128 pair = load_halves(magnitudes + k, magnitudes + k + 1);
    store_lanes(reinterpret_cast<float*>(to + k),
                _mm_or_ps(_mm_andnot_ps(sign_bits(), pair), signs.of[k / 2]));
  }
}

template <Direction kDirection>
static inline void round_block(const double* src, double* dst) {
  double whole[kBlock];
#pragma GCC unroll 4
  for (int k = 0; k < kBlock; ++k) put(whole + k, shifted<kDirection>(src + k));
  store_with_signs(dst, whole, signs_of(src));
}

// Whole blocks by `block`, the rest and blocks with special elements by `one`.
template <class Block, class One>
static inline void walk_doubles(const double* src, int32_t len, Block block, One one) {
  const int32_t whole = len - len % kBlock;
  int32_t i = 0;
  while (i < len) {
    for (; i < whole && all_below_2_57(src + i); i += kBlock) block(i);
    const int32_t end = i < whole ? i + kBlock : len;
    for (; i < end; ++i) one(i);
  }
}

template <Direction kDirection>
static inline void round_elements(const double* src, double* dst, int32_t len) {
  const auto one = [=](int32_t i) { round_element<kDirection>(src + i, dst + i); };
  const SilentX87 x87;
  if (len < kBlock || !x87.ready()) {
    for (int32_t i = 0; i < len; ++i) one(i);
  } else {
    x87.enter(kRoundingField<kDirection>);
    walk_doubles(
        src, len, [=](int32_t i) { round_block<kDirection>(src + i, dst + i); }, one);
    x87.leave();
  }
}

// ---- Singles

// Round to nearest, nothing trapping, subnormals as they are; the caller's word and flags put back.
struct SilentSse {
  uint32_t caller = sse_control();
  SilentSse() { sse_load(0x1F80); }
  ~SilentSse() { sse_load(caller); }
};

// Magnitudes from 2^23 on, infinities and NaNs pass: nothing is added to them, which leaves a NaN
// quiet.
template <Direction kDirection>
static inline __m128 rounded(__m128 x) {
  const __m128 one = all_lanes(1.0f), a = magnitude_of(x);
  const __m128 shifter = _mm_and_ps(_mm_cmplt_ps(a, all_lanes(0x1p23f)), all_lanes(0x1p23f));
  const __m128 nearest = (a + shifter) - shifter;
  const __m128 t = _mm_or_ps(nearest, sign_of(x));
  switch (kDirection) {
    case Direction::kDown:
      return t - _mm_and_ps(_mm_cmpgt_ps(t, x), one);
    case Direction::kUp:
      return _mm_or_ps(t + _mm_and_ps(_mm_cmplt_ps(t, x), one), sign_of(x));
    case Direction::kZero:
      return _mm_or_ps(nearest - _mm_and_ps(_mm_cmpgt_ps(nearest, a), one), sign_of(x));
    case Direction::kNearestAway:
      return _mm_or_ps(nearest + _mm_and_ps(_mm_cmpge_ps(a - nearest, all_lanes(0.5f)), one),
                       sign_of(x));
    default:
      return t;
  }
}

template <class Four, class One>
static inline void walk_singles(int32_t len, Four four, One one) {
  const SilentSse sse;
  int32_t i = 0;
  for (; i + 4 <= len; i += 4) four(i);
  for (; i < len; ++i) one(i);
}

template <Direction kDirection>
static inline void round_elements(const float* src, float* dst, int32_t len) {
  walk_singles(
      len,
      [=](int32_t i) {
        store_elements<4>(dst + i, rounded<kDirection>(load_elements<4>(src + i)));
      },
      [=](int32_t i) {
        store_elements<1>(dst + i, rounded<kDirection>(load_elements<1>(src + i)));
      });
}

// ---- Arrays

// Whole blocks by the wide library, where there is one; returns where they end. Its steps know no special
// elements. They raise flags that are put back, as all of these functions do.
template <class E>
__attribute__((noinline)) static int32_t step_widely(WideStep<E> step, const Arrays<E>& arrays,
                                                     int32_t len) {
  const SilentSse sse;
  uint32_t flags = 0;
  return step(arrays, 0, len, &flags);
}

template <auto kStep, class E>
static inline int32_t begin_widely(const Arrays<E>& arrays, int32_t len) {
  const WideLibrary& library = wide_library();
  return library.takes(len) ? step_widely(library.*kStep, arrays, len) : 0;
}

template <class E>
struct WideSteps {
  WideStep<E> WideLibrary::*toward[5];  // by direction
};
template <class E>
constexpr WideSteps<E> kWideSteps;
template <>
constexpr WideSteps<float> kWideSteps<float> = {{&WideLibrary::Rint_32f, &WideLibrary::Floor_32f,
                                                 &WideLibrary::Ceil_32f, &WideLibrary::Trunc_32f,
                                                 &WideLibrary::Round_32f}};
template <>
constexpr WideSteps<double> kWideSteps<double> = {{&WideLibrary::Rint_64f, &WideLibrary::Floor_64f,
                                                   &WideLibrary::Ceil_64f, &WideLibrary::Trunc_64f,
                                                   &WideLibrary::Round_64f}};

template <Direction kDirection, class E>
static inline void round_all(const E* src, E* dst, int32_t len) {
  constexpr auto kStep = kWideSteps<E>.toward[int(kDirection)];
  const int32_t done = begin_widely<kStep>(Arrays<E>{src, src, dst, dst}, len);
  if (done < len) round_elements<kDirection>(src + done, dst + done, len - done);
}

template <Direction kDirection, class E>
static inline Status round_array(const E* src, E* dst, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !dst) return LUX_NULL_POINTER;
  round_all<kDirection>(src, dst, len);
  return LUX_OK;
}

// In the caller's rounding direction. Checks nothing and returns the loop count.
template <class E>
static inline Status round_as_caller(const E* src, E* dst, int32_t len) {
  if (len < 1) return 0;
  switch (Direction(x87_control() >> 10 & 3)) {
    case Direction::kDown:
      round_all<Direction::kDown>(src, dst, len);
      break;
    case Direction::kUp:
      round_all<Direction::kUp>(src, dst, len);
      break;
    case Direction::kZero:
      round_all<Direction::kZero>(src, dst, len);
      break;
    default:
      round_all<Direction::kNearestEven>(src, dst, len);
  }
  return len;
}

// ---- Integer part and fraction, which is exact

template <int kCount>
static inline void split(const float* src, float* whole, float* fraction) {
  const __m128 x = load_elements<kCount>(src), cut = rounded<Direction::kZero>(x);
  // An infinity leaves no fraction, a NaN itself.
  const __m128 rest =
      _mm_and_ps(x - cut, _mm_cmpneq_ps(magnitude_of(x), all_lanes(Format<float>::kInf)));
  store_elements<kCount>(whole, cut);
  store_elements<kCount>(fraction, _mm_or_ps(rest, sign_of(x)));
}

static inline void split_elements(const float* src, float* whole, float* fraction, int32_t len) {
  walk_singles(
      len, [=](int32_t i) { split<4>(src + i, whole + i, fraction + i); },
      [=](int32_t i) { split<1>(src + i, whole + i, fraction + i); });
}

static inline void split_block(const double* src, double* whole, double* fraction) {
  alignas(16) double cut[kBlock], rest[kBlock];
  const auto entry = [=](int k) { return kFractionMasks.entry(upper_word(src + k) & ~kSignUpper); };
  __m128 signs[kBlock / 2];  // before the results are stored, for src may be either destination
#pragma GCC unroll 2
  for (int k = 0; k < kBlock; k += 2) {
    const __m128 x = load_pair(src + k);
    signs[k / 2] = _mm_and_ps(sign_bits(), x);
    store_pair(cut + k, _mm_andnot_ps(load_halves(entry(k), entry(k + 1)), x));
  }
#pragma GCC unroll 4
  for (int k = 0; k < kBlock; ++k)
    put(rest + k, static_cast<long double>(in_memory(src + k)) - cut[k]);
#pragma GCC unroll 2
  for (int k = 0; k < kBlock; k += 2) {
    store_lanes(reinterpret_cast<float*>(whole + k), load_pair(cut + k));
    // A zero takes the sign of x from the pattern.
    store_lanes(reinterpret_cast<float*>(fraction + k),
                _mm_or_ps(load_halves(rest + k, rest + k + 1), signs[k / 2]));
  }
}

static inline void split_element(const double* src, double* whole, double* fraction) {
  const uint32_t upper = upper_word(src), a = upper & ~kSignUpper;
  if (a >= kWhole) {
    const uint64_t x = load_bits(src);
    store_bits(whole, quieted<double>(x));
    store_bits(fraction, magnitude<double>(x) > Format<double>::kInf ? quieted<double>(x)
                                                                     : x & Format<double>::kSign);
  } else {
    const long double value = load_extended(src);
    // In one store: the unit loads it next, and a load that spans two stores has to wait for both.
    store_half(whole, _mm_andnot_ps(load_half(kFractionMasks.entry(a)), load_half(src)));
    put(fraction, value - load_extended(whole));
    // A zero takes the sign of x from the pattern.
    set_upper_bits(fraction, upper & kSignUpper);
  }
}

static inline void split_elements(const double* src, double* whole, double* fraction, int32_t len) {
  const SilentX87 x87;
  x87.enter(kRoundingField<Direction::kZero>);
  walk_doubles(
      src, len, [=](int32_t i) { split_block(src + i, whole + i, fraction + i); },
      [=](int32_t i) { split_element(src + i, whole + i, fraction + i); });
  x87.leave();
}

template <auto kStep, class E>
static inline Status split_array(const E* src, E* whole, E* fraction, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !whole || !fraction) return LUX_NULL_POINTER;
  const int32_t done = begin_widely<kStep>(Arrays<E>{src, src, whole, fraction}, len);
  if (done < len) split_elements(src + done, whole + done, fraction + done, len - done);
  return LUX_OK;
}

#endif
