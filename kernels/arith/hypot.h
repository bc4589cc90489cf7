// SPDX-License-Identifier: MIT
//
// Hypotenuse sqrt(x^2 + y^2) on the x87 unit at 53-bit precision. The sum of squares is stored as a
// double D = M 4^k, 1 <= M < 4, and its root taken in software:
//
//   s = a short 1/sqrt(M), from the parity of D's exponent and its top eight fraction bits,
//   g = M s, h = s/2,  three times  r = 1/2 - g h, h = h + h r, g = g + g r,
//   d = M - g^2 rounded once,  sqrt(D) = (g + d h) 2^k, rounded to the element type.
//
//   ordinary elements   blocks of eight; k is added to the exponent of the stored result, which is
//                       the same as multiplying because the result is a normal number
//   others              one by one
//
// The seed's relative error e goes to 1.5 e^2 in a step, which leaves g and h the errors of their
// last roundings. No D is known for which g + d h is not the correctly rounded root of M; a test
// tries the hardest.
#ifndef LUX_KERNELS_ARITH_HYPOT_H
#define LUX_KERNELS_ARITH_HYPOT_H

#include "kernels/frame.h"
#include "core/generated/root_seeds_table.h"  // kRootSeed
#include "kernels/lanes.h"

// So many that every step has another element's work to do while it waits for the one before it.
constexpr int32_t kBlock = 8;

// An ordinary element has the upper word of its larger magnitude in low <= word < high: no sum of
// squares leaves the normal doubles, and every root is a normal number. The lower 23 bits are zero.
template <class E>
struct Ordinary;

// ---- Screening

static inline __m128 upper_words(const float* four) { return load_lanes(four); }
static inline __m128 upper_words(const double* four) {
  return _mm_shuffle_ps(load_pair(four), load_pair(four + 2), _MM_SHUFFLE(3, 1, 3, 1));
}

// Compares powers of two, zero and infinity only: that raises no flag and depends on no setting.
template <class E>
static inline bool all_ordinary(const E* x, const E* y) {
  const __m128 exponents = all_lanes(Format<float>::kInf);
  __m128 special = _mm_setzero_ps();
  for (int i = 0; i < kBlock; i += 4) {
    const __m128 larger = _mm_max_ps(_mm_and_ps(upper_words(x + i), exponents),
                                     _mm_and_ps(upper_words(y + i), exponents));
    special = _mm_or_ps(special, _mm_cmplt_ps(larger, all_lanes(Ordinary<E>::kLow)));
    special = _mm_or_ps(special, _mm_cmpge_ps(larger, all_lanes(Ordinary<E>::kHigh)));
  }
  return !in_any_lane(special);
}

template <class E>
static inline bool is_ordinary(const E* x, const E* y) {
  const uint32_t a = upper_magnitude(x), b = upper_magnitude(y);
  const uint32_t larger = a > b ? a : b;
  return Ordinary<E>::kLow <= larger && larger < Ordinary<E>::kHigh;
}

// ---- Root

// Of a double's upper word: the parity of its exponent above the top eight fraction bits.
static inline uint32_t seed_index(uint32_t upper) { return (upper >> 12 & 0x1FF) ^ 0x100; }

// Half the exponent less the parity, in place in an upper word.
static inline uint32_t half_exponent(uint32_t upper) {
  return uint32_t(int32_t(upper - Upper<double>::kOne) >> 1) & ~Upper<double>::kFraction;
}

// M. A double that was stored in halves can only be loaded after a long wait, so packed logic makes
// it.
static inline void store_significand(double* m, const double* d, uint32_t parity) {
  static const uint64_t fraction = Format<double>::kFraction;
  static const double kParity[2] = {1.0, 2.0};
  const __m128 pattern =
      _mm_or_ps(_mm_and_ps(load_half(d), load_half(&fraction)), load_half(&kParity[parity]));
  store_half(m, pattern);
}

// sqrt(M) of each D, in [1, 2].
template <int kCount>
static inline void roots(const double* d, double* root) {
  constexpr double kHalf = 0.5, kSplitter = 0x1.0000002p+27;
  double m[kCount], g[kCount], h[kCount];
#pragma GCC unroll 8
  for (int i = 0; i < kCount; ++i) {
    const uint32_t index = seed_index(upper_word(d + i));
    store_significand(m + i, d + i, index >> 8);
    g[i] = m[i] * kRootSeed[index];
    h[i] = kHalf * kRootSeed[index];
  }
  for (int step = 0; step < 3; ++step) {
#pragma GCC unroll 8
    for (int i = 0; i < kCount; ++i) {
      const double r = kHalf - g[i] * h[i];
      h[i] = h[i] + h[i] * r;
      g[i] = g[i] + g[i] * r;
    }
  }
#pragma GCC unroll 8
  for (int i = 0; i < kCount; ++i) {
    const double product = g[i] * kSplitter;
    const double high = product - (product - g[i]), low = g[i] - high;
    const double cross = high * low;
    const double residual = ((m[i] - high * high) - (cross + cross)) - low * low;
    root[i] = g[i] + residual * h[i];
  }
}

// ---- Elements

// The squares may leave the range of doubles, so they must not be kept as such.
static inline double sum_of_squares(long double x, long double y) {
  return store_f64(double(x * x + y * y));
}

template <int kCount, class E>
static inline void hypot_ordinary(const E* x, const E* y, E* dst) {
  constexpr int kShift = Format<E>::kFractionBits % 32 - 20;  // between the exponent fields
  double d[kCount], root[kCount];
#pragma GCC unroll 8
  for (int i = 0; i < kCount; ++i) d[i] = sum_of_squares(in_memory(x + i), in_memory(y + i));
  roots<kCount>(d, root);
#pragma GCC unroll 8
  for (int i = 0; i < kCount; ++i) {
    in_memory(dst + i) = E(root[i]);
    add_to_upper_word(dst + i, half_exponent(upper_word(d + i)) << kShift);
  }
}

// Any exponents. The bits of D are read as they are, also those of infinity and of a subnormal:
// so the results of such sums are what the steps make of them, and the reference lists them.
template <class E>
static inline E scaled_root(const double* d, int32_t scaled_up) {
  double root;
  roots<1>(d, &root);
  const int32_t k = int32_t(half_exponent(upper_word(d))) >> 20;
  return E(root * power_of_two(k - scaled_up));
}

static inline float finite_hypot(const float* x, const float* y) {
  const double d = sum_of_squares(in_memory(x), in_memory(y));
  return store_f32(scaled_root<float>(&d, 0));
}

// The double that a store would give, out of the range of normal doubles too, without the overflow
// or underflow that a store would raise: those are not the result's. Added to the smallest normal
// number a sum below it is rounded where a subnormal ends.
static inline void any_sum_of_squares(long double x, long double y, double* d) {
  static const double smallest = 0x1p-1022;
  const long double sum = x * x + y * y;
  if (sum >= power_of_two(1024)) {
    store_bits(d, Format<double>::kInf);
  } else if (sum < smallest) {
    put(d, sum + smallest);
    store_bits(d, load_bits(d) - load_bits(&smallest));
  } else {
    put(d, sum);
  }
}

static inline double finite_hypot(const double* x, const double* y) {
  constexpr uint32_t kTiny = 500 << 20;  // 2^-523
  const bool tiny = upper_magnitude(x) < kTiny && upper_magnitude(y) < kTiny;
  const double scale = tiny ? 0x1p+1000 : 1.0;
  double d;
  any_sum_of_squares(in_memory(x) * scale, in_memory(y) * scale, &d);
  return store_f64(scaled_root<double>(&d, tiny ? 1000 : 0));
}

template <class E>
__attribute__((noinline, cold)) static void hypot_special(const E* x, const E* y, E* dst) {
  constexpr auto kInf = Format<E>::kInf;
  const auto u = load_bits(x), v = load_bits(y), a = magnitude<E>(u), b = magnitude<E>(v);
  if (a > kInf) {
    store_bits(dst, quieted<E>(u));
  } else if (b > kInf) {
    store_bits(dst, quieted<E>(v));
  } else if (a == kInf || b == kInf) {
    store_bits(dst, kInf);
  } else if (a == 0 && b == 0) {
    store_bits(dst, 0);
  } else {
    in_memory(dst) = finite_hypot(x, y);
  }
}

template <class E>
static Status hypot(const E* x, const E* y, E* dst, int32_t len) {
  const Arrays<E> arrays = {x, y, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, kBlock>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        for (; i < last && all_ordinary(x + i, y + i); i += kBlock)
          hypot_ordinary<kBlock>(x + i, y + i, dst + i);
        return i;
      },
      [=](int32_t i, Status*) {
        if (is_ordinary(x + i, y + i))
          hypot_ordinary<1>(x + i, y + i, dst + i);
        else
          hypot_special(x + i, y + i, dst + i);
      });
}

#endif
