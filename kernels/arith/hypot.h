// SPDX-License-Identifier: MIT
//
// Hypotenuse sqrt(x^2 + y^2) on the x87 unit at 53-bit precision: the root of the sum of squares,
// both rounded to 53 bits.
//
//   ordinary elements   blocks of eight: no step of theirs leaves the normal doubles
//   others              one by one
//
// The root was first taken by a table and Newton steps. tables/hypot_root.py shows that those gave
// the correctly rounded root of every double, which fsqrt gives, too.
#ifndef LUX_KERNELS_ARITH_HYPOT_H
#define LUX_KERNELS_ARITH_HYPOT_H

#include "kernels/frame.h"
#include "kernels/lanes.h"

// So many that the screening of the next block runs beside the roots of this one.
constexpr int32_t kBlock = 8;

// An ordinary element has the upper word of its larger magnitude in low <= word < high. The lower 23
// bits are zero.
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
    if (Ordinary<E>::kLow != 0)
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

// ---- Elements

// Rounded to the precision that the control word names.
static inline long double root(long double x) {
  asm("fsqrt" : "+t"(x));
  return x;
}

// Squares and their sum may leave the range of doubles in a register.
static inline long double sum_of_squares(long double x, long double y) { return x * x + y * y; }

template <int kCount, class E>
static inline void hypot_ordinary(const E* x, const E* y, E* dst) {
#pragma GCC unroll 8
  for (int i = 0; i < kCount; ++i)
    in_memory(dst + i) = E(root(sum_of_squares(in_memory(x + i), in_memory(y + i))));
}

// Finite and not ordinary.
template <class E>
static void hypot_extreme(const E* x, const E* y, E* dst);

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
    hypot_extreme(x, y, dst);
  }
}

template <auto kStep, class E>
static Status hypot(const E* x, const E* y, E* dst, int32_t len) {
  const Arrays<E> arrays = {x, y, dst, dst};
  return run_kernel<X87Nearest<X87_DOUBLE>, kBlock>(
      arrays, len,
      with_wide_step<Unit::kX87, kStep>(arrays, len,
                                        [=](int32_t i, int32_t last) {
                                          for (; i < last && all_ordinary(x + i, y + i);
                                               i += kBlock)
                                            hypot_ordinary<kBlock>(x + i, y + i, dst + i);
                                          return i;
                                        }),
      [=](int32_t i, Status*) {
        if (is_ordinary(x + i, y + i))
          hypot_ordinary<1>(x + i, y + i, dst + i);
        else
          hypot_special(x + i, y + i, dst + i);
      });
}

#endif
