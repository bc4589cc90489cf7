// SPDX-License-Identifier: MIT
//
// Sine, cosine and tangent of single-precision arrays in the steps of kernels/trig/trig_32f.h.
//
// A24: four doubles at a time take the place of the x87 unit at 53-bit precision.
//
// A21: there the x87 unit subtracts n high, which is exact, and n low at 64-bit precision, and rounds to
// single. One fused operation gives the same single unless its result is next to the middle of two: such
// a block is left to the kernel. n low is at most 2^15 times the rest, so that the unit's roundings are
// below 2^-49 of it, eight places of a double.
#include "kernels/trig/sincos_32f_step.h"
#include "kernels/trig/sine_32f_step.h"
#include "kernels/trig/tan_32f_step.h"
#include "kernels/wide_doubles.h"

// ---- Which elements

static inline bool at_most(Singles x, uint32_t bound) { return all_below(x, bound + 1); }

static inline bool any_is(Singles x, uint32_t pattern) {
  const __m256i same = _mm256_cmpeq_epi32(patterns_of(x), _mm256_set1_epi32(int32_t(pattern)));
  return in_any_lane(_mm256_castsi256_ps(same));
}

static inline bool any_below(Singles x, uint32_t bound) {
  const __m256i below =
      _mm256_cmpgt_epi32(_mm256_set1_epi32(int32_t(bound)), patterns_of(magnitude_of(x)));
  return in_any_lane(_mm256_castsi256_ps(below));
}

// ---- A24

// x = n period + r, for the signs n in all lanes.
struct Turned {
  __m128i n;
  __m256d r;
};

static inline __m256d without_multiple(__m256d x, __m256d n, const Period& period) {
  return (x - n * period.high) - n * period.low;
}

static inline Turned turned(__m128 single, const Period& period) {
  const __m256d x = _mm256_cvtps_pd(single);
  const __m128i n = _mm256_cvtpd_epi32(x * period.inverse);
  return {n, without_multiple(x, _mm256_cvtepi32_pd(n), period)};
}

static inline __m128 with_sign_of_lowest_bit(__m128 x, __m128i n) {
  return _mm_xor_ps(x, _mm_castsi128_ps(_mm_slli_epi32(n, 31)));
}

static inline __m128 rounded_sine(const Turned& t) {
  return with_sign_of_lowest_bit(_mm256_cvtpd_ps(sine_polynomial<double>(t.r, t.r * t.r)), t.n);
}

static inline __m128 sine_half(__m128 x) { return rounded_sine(turned(x, kPi)); }

// Of 2n - 1 halves of pi.
static inline __m128 cosine_half(__m128 single) {
  const __m256d x = _mm256_cvtps_pd(single);
  const __m128i n = _mm256_cvtpd_epi32((x + kPiOver2) * kPi.inverse);
  const __m256d m = _mm256_cvtepi32_pd(n);
  return rounded_sine({n, without_multiple(x, m + m - 1.0, kHalfPi)});
}

static inline __m128 tangent_half(__m128 x) {
  const Turned t = turned(x, kHalfPi);
  const __m256d r = t.r, r2 = r * r;
  const __m256d numerator = r + kT[0] * r * r2, denominator = 1 + r2 * (kU[0] + r2 * kU[1]);
  const __m256d odd = _mm256_castsi256_pd(_mm256_cvtepi32_epi64(_mm_slli_epi32(t.n, 31)));
  const __m256d quotient =
      _mm256_blendv_pd(numerator, denominator, odd) / _mm256_blendv_pd(denominator, numerator, odd);
  return with_sign_of_lowest_bit(_mm256_cvtpd_ps(quotient), t.n);
}

template <auto kHalf>
static inline void by_halves(const float* src, float* dst) {
  const Singles x = load_lanes(src);
  const __m128 low = kHalf(_mm256_castps256_ps128(x));
  store_lanes(dst, _mm256_set_m128(kHalf(_mm256_extractf128_ps(x, 1)), low));
}

LUX_WIDE_KERNEL(Sin, 32f, A24) {
  return wide_blocks(
      arrays, first, last, [](Singles x) { return at_most(x, kSineA24); }, by_halves<sine_half>);
}

LUX_WIDE_KERNEL(Cos, 32f, A24) {
  return wide_blocks(
      arrays, first, last, [](Singles x) { return at_most(x, kCosineA24); },
      by_halves<cosine_half>);
}

LUX_WIDE_KERNEL(Tan, 32f, A24) {
  return wide_blocks(
      arrays, first, last, [](Singles x) { return at_most(x, kTangentA24) && !any_below(x, 1); },
      by_halves<tangent_half>);
}

struct HalfOfBoth {
  __m128 sine, cosine;
};

// Exchanged when n is odd, and the signs of the quadrant.
template <bool kTwoParts>
static inline HalfOfBoth sine_and_cosine_half(__m128 single) {
  Turned t;
  if (kTwoParts) {
    t = turned(single, kHalfPi);
  } else {
    const __m256d x = _mm256_cvtps_pd(single);
    t.n = _mm256_cvtpd_epi32(x * kHalfPi.inverse);
    const __m256d n = _mm256_cvtepi32_pd(t.n);
    t.r = ((x - n * kTop) - n * kRest) - n * kHalfPi.low;
  }
  __m256d sine, cosine;
  polynomials<double>(t.r, t.r, sine, cosine);
  const __m128 a = _mm256_cvtpd_ps(sine), b = _mm256_cvtpd_ps(cosine);
  const __m128 odd = _mm_castsi128_ps(_mm_slli_epi32(t.n, 31));
  const __m128i second = _mm_slli_epi32(t.n, 30);
  const __m128 sign = _mm_castsi128_ps(second & _mm_set1_epi32(INT32_MIN));
  return {_mm_xor_ps(_mm_blendv_ps(a, b, odd), sign),
          _mm_xor_ps(_mm_blendv_ps(b, a, odd), _mm_xor_ps(sign, odd))};
}

template <bool kTwoParts>
static inline void sine_and_cosine_block(Singles x, float* dst1, float* dst2) {
  const HalfOfBoth low = sine_and_cosine_half<kTwoParts>(_mm256_castps256_ps128(x));
  const HalfOfBoth high = sine_and_cosine_half<kTwoParts>(_mm256_extractf128_ps(x, 1));
  store_lanes(dst1, _mm256_set_m128(high.sine, low.sine));
  store_lanes(dst2, _mm256_set_m128(high.cosine, low.cosine));
}

LUX_WIDE_KERNEL(SinCos, 32f, A24) {
  int32_t i = first;
  for (; i + kLanes <= last; i += kLanes) {
    const Singles x = load_lanes(arrays.src1 + i);
    if (any_is(x, Format<float>::kSign) || !at_most(x, kSinCosBound)) break;
    if (at_most(x, kTwoPartBound))
      sine_and_cosine_block<true>(x, arrays.dst1 + i, arrays.dst2 + i);
    else
      sine_and_cosine_block<false>(x, arrays.dst1 + i, arrays.dst2 + i);
  }
  return i;
}

// ---- A21

// The bits of a double behind those of a single are within kNear of the middle.
constexpr int64_t kNear = 16, kBehind = (1 << 29) - 1, kMiddle = 1 << 28;

static inline __m256i near_middle(__m256d x) {
  const __m256i behind = _mm256_castpd_si256(x) & _mm256_set1_epi64x(kBehind);
  const __m256i distance = _mm256_sub_epi64(behind, _mm256_set1_epi64x(kMiddle - kNear));
  return _mm256_cmpeq_epi64(distance & _mm256_set1_epi64x(~(2 * kNear - 1)),
                            _mm256_setzero_si256());
}

static inline __m256d less_multiple(__m128 x, __m128 multiple, const Period& period) {
  const __m256d n = _mm256_cvtps_pd(multiple);
  const __m256d rest = _mm256_fnmadd_pd(n, _mm256_set1_pd(period.high), _mm256_cvtps_pd(x));
  return _mm256_fnmadd_pd(n, _mm256_set1_pd(period.low), rest);
}

// False when an element is undecided.
static inline bool reduce(Singles x, Singles multiple, const Period& period, Singles* r) {
  const __m256d low =
      less_multiple(_mm256_castps256_ps128(x), _mm256_castps256_ps128(multiple), period);
  const __m256d high =
      less_multiple(_mm256_extractf128_ps(x, 1), _mm256_extractf128_ps(multiple, 1), period);
  *r = _mm256_set_m128(_mm256_cvtpd_ps(high), _mm256_cvtpd_ps(low));
  return !in_any_lane(_mm256_castsi256_ps(near_middle(low) | near_middle(high)));
}

constexpr uint32_t kDenormal = 0x02, kInexact = 0x20;  // flags

// The words of run_a21 in kernels/trig/trig_32f.h; finish(shifted, r, s, i) stores the results. The cosine
// takes small elements as all others; its multiple is no whole number of periods, and so never 0.
template <bool kWithSmall = true, class Ordinary, class Locate, class Finish>
static inline int32_t blocks_a21(const Arrays<float>& arrays, const Period& period, int32_t i,
                                 int32_t last, uint32_t* x87_flags, Ordinary ordinary,
                                 Locate locate, Finish finish) {
  Singles any_multiple = all_lanes(0.0f);
  for (; i + kLanes <= last; i += kLanes) {
    const Singles x = load_lanes(arrays.src1 + i);
    if (!ordinary(x)) break;
    const bool small = any_below(x, kWithSmall ? kSmall : Format<float>::kSmallestNormal);
    const OnGrid at = locate(kWithSmall && __builtin_expect(small, false) ? nudged(x) : x);
    Singles r;
    if (__builtin_expect(!reduce(x, at.multiple, period, &r), false)) break;
    any_multiple = either(any_multiple, at.multiple);
    Singles s = r;
    if (__builtin_expect(small, false)) {
      if (kWithSmall) s = unless_tiny(r);
      if (!none_subnormal(x)) *x87_flags |= kDenormal;
    }
    finish(at.shifted, r, s, i);
  }
  if (!all_below(any_multiple, 1)) *x87_flags |= kInexact;
  return i;
}

LUX_WIDE_KERNEL(Sin, 32f, A21) {
  return blocks_a21(
      arrays, kPi, first, last, x87_flags, [](Singles x) { return at_most(x, kSineA21); },
      locate_sine,
      [&](Singles shifted, Singles r, Singles s, int32_t i) {
        store_lanes(arrays.dst1 + i, sine_of(shifted, r, s));
      });
}

LUX_WIDE_KERNEL(Cos, 32f, A21) {
  return blocks_a21<false>(
      arrays, kPi, first, last, x87_flags, [](Singles x) { return at_most(x, kCosineA21); },
      locate_cosine,
      [&](Singles shifted, Singles r, Singles, int32_t i) {
        store_lanes(arrays.dst1 + i, sine_of(shifted, r, r));
      });
}

LUX_WIDE_KERNEL(SinCos, 32f, A21) {
  return blocks_a21(
      arrays, kHalfPi, first, last, x87_flags,
      [](Singles x) { return at_most(x, kSinCosBound) && !any_is(x, Format<float>::kSign); },
      locate_quadrant,
      [&](Singles shifted, Singles r, Singles s, int32_t i) {
        const auto [sine, cosine] = sine_and_cosine_of(shifted, r, s);
        store_lanes(arrays.dst1 + i, sine);
        store_lanes(arrays.dst2 + i, cosine);
      });
}

LUX_WIDE_KERNEL(Tan, 32f, A21) {
  return blocks_a21(
      arrays, kHalfPi, first, last, x87_flags,
      [](Singles x) { return at_most(x, kTangentA21) && !any_below(x, 1); }, locate_quadrant,
      [&](Singles shifted, Singles r, Singles s, int32_t i) {
        store_lanes(arrays.dst1 + i, tangent_of(shifted, r, s));
      });
}
