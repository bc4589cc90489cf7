// SPDX-License-Identifier: MIT
//
// The lower grades of single precision: four elements packed, within 2^-21 in each part.
//
// An element is packed when both magnitudes lie between bounds of its function, so that nothing on
// the way overflows, is subnormal or cancels. All others, and those that a step finds to cancel, go
// the way of A24 and give its results.
//
//   e^x       x = n ln2 + r, |r| <= ln2/2, a polynomial times 2^n
//   cosh x    E + 1/(4E), E = e^|x|/2;  sinh x = E - 1/(4E), below 1 a polynomial
//   sin y     y = m pi + r, |r| <= pi/2, m pi in three parts: (-1)^m sin r, a polynomial
//   cos y     the same with m + 1/2 instead of m, so that it is accurate next to its zeros too
//   log |z|   re^2 + im^2 = 2^e m, m of 0.707 to 1.414: e ln2/2 + atanh((m-1)/(m+1)), a polynomial;
//             not from 1/2 to 2, where this cancels or loses what the squares have rounded away
//   angle     atan of the smaller part over the larger, a polynomial; pi/2 and pi less this
#ifndef LUX_COMPLEX_PACKED_H
#define LUX_COMPLEX_PACKED_H

#include "complex/generated/complex_32f_table.h"
#include "complex/logarithm_passes.h"
#include "kernels/lanes.h"

struct PackedComplex {
  __m128 re, im;
};

constexpr float kPackedShifter = 0x1.8p23f;  // its ulp is 1

static inline __m128 nearest_whole(__m128 x) { return (x + kPackedShifter) - kPackedShifter; }

// x + x (w P(w)), w the square of x or of something larger where this does not count.
template <const auto& kTail>
static inline __m128 with_tail(__m128 x, __m128 w) {
  return x + x * (w * polynomial<kTail>(w));
}

// ---- Exponential

// 2^n of whole n; leaves the MMX state occupied.
static inline __m128 packed_power_of_two(__m128 n) {
  const __m128 pattern = (n + 127.0f) * 0x1p23f;
  const __m64 halves[2] = {_mm_cvttps_pi32(pattern),
                           _mm_cvttps_pi32(_mm_movehl_ps(pattern, pattern))};
  return load_halves(&halves[0], &halves[1]);
}

// e^x 2^shift, |x| < 80. `low`, if any, is what x does not hold of its number.
static inline __m128 packed_exponential(__m128 x, float shift, auto... low) {
  const __m128 n = nearest_whole(x * kInverseLn2);
  const __m128 r = (((x - n * kLn2[0]) - n * kLn2[1]) + ... + low);
  return (1.0f + (r + r * r * polynomial<kExpTail>(r))) * packed_power_of_two(n + shift);
}

struct PackedHyperbolic {
  __m128 sinh, cosh;
};

static inline PackedHyperbolic packed_hyperbolic(__m128 x) {
  const __m128 a = magnitude_of(x), e = packed_exponential(a, -1), inverse = 0.25f / e;
  const __m128 size =
      select(_mm_cmplt_ps(a, all_lanes(1.0f)), with_tail<kSinhTail>(a, a * a), e - inverse);
  return {_mm_or_ps(size, sign_of(x)), e + inverse};
}

// ---- Sine and cosine

// sin y with its sign turned for odd m, y near `multiple` times pi.
static inline __m128 packed_sine_near(__m128 y, __m128 multiple, __m128 m, auto... low) {
  const __m128 r =
      ((((y - multiple * kPi[0]) - multiple * kPi[1]) - multiple * kPi[2]) + ... + low);
  const __m128 odd = m - 2.0f * nearest_whole(m * 0.5f);  // 0, 1 or -1
  // Only with a lower part can r be so small that the tail would be subnormal.
  const __m128 square = r * r;
  const __m128 counted = sizeof...(low) ? _mm_max_ps(square, all_lanes(0x1p-60f)) : square;
  return with_tail<kSineTail>(r, counted) * (1.0f - 2.0f * (odd * odd));
}

struct PackedSineCosine {
  __m128 sine, cosine;
};

// |y| < 128
static inline PackedSineCosine packed_sine_cosine(__m128 y, auto... low) {
  const __m128 turns = y * kInversePi, m = nearest_whole(turns), k = nearest_whole(turns + 0.5f);
  return {packed_sine_near(y, m, m, low...), packed_sine_near(y, k - 0.5f, k, low...)};
}

// ---- Logarithm and angle

// x = 2^e m of normal positive numbers, m of 0.707 to 1.414.
struct PackedPlace {
  __m128 m, e;
};

static inline PackedPlace packed_place(__m128 x) {
  alignas(16) int32_t exponents[4];
  const __m128 bits = _mm_and_ps(x, all_lanes(Format<float>::kInf));
  _mm_store_ps(reinterpret_cast<float*>(exponents), bits);
  const __m128 m = significand_of(x), above = _mm_cmplt_ps(all_lanes(0x1.6a09e6p+0f), m);
  return {select(above, m * 0.5f, m),
          (from_integers(exponents) * 0x1p-23f - 127.0f) + _mm_and_ps(above, all_lanes(1.0f))};
}

// Half the logarithm.
static inline __m128 packed_half_log(__m128 norm) {
  const auto [m, e] = packed_place(norm);
  const __m128 s = (m - 1.0f) / (m + 1.0f);
  return e * (0.5f * kLn2[0]) + (with_tail<kAtanhTail>(s, s * s) + e * (0.5f * kLn2[1]));
}

static inline __m128 packed_angle(const PackedComplex& z) {
  const __m128 a = magnitude_of(z.re), b = magnitude_of(z.im);
  const __m128 t = _mm_min_ps(a, b) / _mm_max_ps(a, b);
  const __m128 counted = _mm_max_ps(t, all_lanes(0x1p-20f));
  const __m128 first = with_tail<kAtanTail>(t, counted * counted);
  const __m128 upper = select(_mm_cmplt_ps(a, b), kHalfPi[0] - (first - kHalfPi[1]), first);
  const __m128 size = select(_mm_cmplt_ps(z.re, _mm_setzero_ps()),
                             2 * kHalfPi[0] - (upper - 2 * kHalfPi[1]), upper);
  return _mm_or_ps(size, sign_of(z.im));
}

// ---- The functions: bounds of both magnitudes, and what is left to the accurate way

struct Bounds {
  uint32_t least, bound;  // patterns
  bool holds(const float* x) const { return upper_magnitude(x) - least < bound - least; }
};

constexpr Bounds bounds(float least, float bound) {
  return {__builtin_bit_cast(uint32_t, least), __builtin_bit_cast(uint32_t, bound)};
}

constexpr Bounds kPackedAngle = bounds(0x1p-30f, 128);
constexpr Bounds kPackedPart = bounds(0x1p-30f, 0x1p30f);

struct PackedExp : ExpSteps {
  static constexpr Bounds kRe = bounds(0x1p-60f, 60), kIm = kPackedAngle;

  static int compute(PackedComplex* z) {
    const __m128 size = packed_exponential(z->re, 0);
    const PackedSineCosine y = packed_sine_cosine(z->im);
    *z = {size * y.cosine, size * y.sine};
    return 0;
  }
};

struct PackedFour {
  __m128 sinh, cosh, sin, cos;
};

template <class Steps>
struct PackedHyperbolicSteps : Steps {
  static constexpr bool kTurned = Steps::kIsTurned;
  static constexpr Bounds kHyperbolic = bounds(0x1p-30f, 20);
  static constexpr Bounds kRe = kTurned ? kPackedAngle : kHyperbolic;
  static constexpr Bounds kIm = kTurned ? kHyperbolic : kPackedAngle;

  static int compute(PackedComplex* z) {
    const PackedHyperbolic h = packed_hyperbolic(kTurned ? z->im : z->re);
    const PackedSineCosine y = packed_sine_cosine(kTurned ? z->re : z->im);
    const PackedFour p = {h.sinh, h.cosh, y.sine, y.cosine};
    *z = {Steps::Parts::re(p), Steps::Parts::im(p)};
    return 0;
  }
};

// (sinh 2x / 2 + i sin 2y / 2) / (sinh^2 x + cos^2 y), each of these by one polynomial or from e^2x:
// products of sines and exponentials would come too near to 2^-21.
template <class Steps>
struct PackedTangentSteps : Steps {
  static constexpr bool kTurned = Steps::kIsTurned;
  static constexpr Bounds kRe = PackedHyperbolicSteps<Steps>::kRe;
  static constexpr Bounds kIm = PackedHyperbolicSteps<Steps>::kIm;

  static int compute(PackedComplex* z) {
    const __m128 x = kTurned ? z->im : z->re, y = kTurned ? z->re : z->im, a = magnitude_of(x);
    const __m128 near = _mm_cmplt_ps(a, all_lanes(1.0f));
    const __m128 sinh = with_tail<kSinhTail>(a, a * a), square = sinh * sinh;
    const __m128 e = packed_exponential(2.0f * a, -2), inverse = 0.0625f / e;
    const __m128 product = select(near, sinh * _mm_sqrt_ps(1.0f + square), e - inverse);
    const __m128 sinh2 = select(near, square, e + (inverse - 0.5f));
    // y = k pi/2 + r
    const __m128 k = nearest_whole(y * (2 * kInversePi)), half = k * 0.5f;
    const __m128 odd = _mm_cmpneq_ps(half, nearest_whole(half));
    const __m128 first = y - k * (kPi[0] / 2), middle = k * (kPi[1] / 2), rough = first - middle;
    const __m128 r = rough + (((first - rough) - middle) - k * (kPi[2] / 2)), w = r * r;
    const __m128 sine2 = with_tail<kSineSquareTail>(w, w);
    const __m128 norm = sinh2 + select(odd, sine2, 1.0f - sine2);
    const __m128 size = _mm_or_ps(product / norm, sign_of(x));
    const __m128 twice = 0.5f * with_tail<kSineTail>(2.0f * r, 4.0f * w) / norm;
    const __m128 turn = _mm_xor_ps(twice, sign_of(odd));
    *z = kTurned ? PackedComplex{turn, size} : PackedComplex{size, turn};
    return 0;
  }
};

template <class Steps>
struct PackedSqrtSteps : Steps {
  static constexpr Bounds kRe = kPackedPart, kIm = kPackedPart;

  static int compute(PackedComplex* z) {
    const __m128 m = _mm_sqrt_ps(z->re * z->re + z->im * z->im);
    const __m128 u = _mm_sqrt_ps(0.5f * (m + magnitude_of(z->re)));
    const __m128 v = 0.5f * magnitude_of(z->im) / u;
    const __m128 left = _mm_cmplt_ps(z->re, _mm_setzero_ps());
    *z = {select(left, v, u), _mm_or_ps(select(left, u, v), sign_of(z->im))};
    return 0;
  }
};

template <class Steps, bool kDecimal>
struct PackedLogSteps : Steps {
  static constexpr Bounds kRe = kPackedPart, kIm = kPackedPart;

  static int compute(PackedComplex* z) {
    const __m128 norm = z->re * z->re + z->im * z->im;
    const __m128 log = packed_half_log(norm), angle = packed_angle(*z);
    const __m128 ring =
        _mm_and_ps(_mm_cmplt_ps(all_lanes(0.5f), norm), _mm_cmplt_ps(norm, all_lanes(2.0f)));
    *z = kDecimal ? PackedComplex{log * kLog10E, angle * kLog10E} : PackedComplex{log, angle};
    return _mm_movemask_ps(ring);
  }
};

using PackedSqrt = PackedSqrtSteps<ElementSteps<complex_sqrt>>;
using PackedLn = PackedLogSteps<LnSteps, false>;
using PackedLog10 = PackedLogSteps<Log10Steps, true>;

// ---- The kernel

static inline PackedComplex load_four(const Complex32* from) {
  const float* const parts = &from->re;
  const __m128 low = load_lanes(parts), high = load_lanes(parts + 4);
  return {_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)),
          _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}

static inline void store_four(Complex32* to, const PackedComplex& z) {
  float* const parts = &to->re;
  store_lanes(parts, _mm_unpacklo_ps(z.re, z.im));
  store_lanes(parts + 4, _mm_unpackhi_ps(z.re, z.im));
}

static inline void store_block(Complex32* to, const Complex32* block, int32_t count) {
  if (__builtin_expect(count == kPass, true)) {
    const float* const from = &block->re;
    float* const out = &to->re;
    for (int32_t k = 0; k < 2 * kPass; k += 4) store_lanes(out + k, load_lanes(from + k));
  } else {
    for (int32_t k = 0; k < count; ++k) store_words(&to[k], load_words(&block[k]));
  }
}

template <class Steps>
__attribute__((noinline, cold)) static void accurate_elements(const Complex32* from, Complex32* to,
                                                              uint32_t elements) {
  alignas(16) Complex64 block[kPass];
  int32_t count = 0;
  for (int32_t k = 0; k < kPass; ++k)
    if (elements >> k & 1) widen(from[k], &block[count++]);
  block_passes<Steps>(block, block, count);
  for (int32_t k = 0, next = 0; k < kPass; ++k)
    if (elements >> k & 1) to[k] = narrowed(block[next++]);
}

template <class Steps>
__attribute__((always_inline)) static inline void packed_block(const Complex32* from, Complex32* to,
                                                               int32_t count) {
  alignas(16) Complex32 apart[kPass], result[kPass];
  uint32_t accurate = 0;
  for (int32_t k = 0; k < count; ++k)
    accurate |= uint32_t(!(Steps::kRe.holds(&from[k].re) & Steps::kIm.holds(&from[k].im))) << k;
  const Complex32* packed = from;
  if (__builtin_expect(accurate || count < kPass, false)) {
    for (int32_t k = 0; k < ((count + 3) & -4); ++k)
      if (k < count && !(accurate >> k & 1))
        store_words(&apart[k], load_words(&from[k]));
      else
        apart[k] = {1, 1};
    packed = apart;
  }
  uint32_t left = 0;
  for (int32_t k = 0; k < count; k += 4) {
    PackedComplex z = load_four(packed + k);
    left |= uint32_t(Steps::compute(&z)) << k;
    store_four(result + k, z);
  }
  _mm_empty();
  accurate |= left & ((1u << count) - 1);
  if (__builtin_expect(accurate, 0)) accurate_elements<Steps>(from, result, accurate);
  store_block(to, result, count);
}

template <class Steps>
static inline Status run_packed(const Lux32fc* src, Lux32fc* dst, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !dst) return LUX_NULL_POINTER;
  const BothNearest<X87_EXTENDED> control;
  for (int32_t i = 0, count; i < len; i += count) {
    count = len - i < kPass ? len - i : kPass;
    packed_block<Steps>(&in_memory(src + i), &in_memory(dst + i), count);
  }
  control.leave();
  return LUX_OK;
}

#define LUX_COMPLEX_PACKED(family, steps)                                         \
  LUX_KERNEL(family, 32fc, A21, 1_1) { return run_packed<steps>(src, dst, len); } \
  LUX_KERNEL_ALIAS(family, 32fc, A11, 1_1, A21)

#endif
