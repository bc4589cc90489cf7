// SPDX-License-Identifier: MIT
//
// Hypotenuse of single-precision arrays, correctly rounded. A double holds every sum of two squares
// as a normal number, so every finite element is ordinary. The sum's and the root's rounding to 53 bits
// move a result by at most 1.5 of its last places as a double; where the middle of two singles is so
// near, an exact comparison decides. A subnormal result has fewer bits than the middles that the test
// knows, and is 2^-50 of itself away from its own.
#include "kernels/arith/hypot.h"
#include "kernels/nearest_32f.h"

// In a result's last places as a double.
constexpr uint32_t kMargin = 2;

// With m the middle of two singles next to `about` and b the larger magnitude: whether a^2 is above
// (m - b)(m + b). The factors have 25 and 26 bits, since m <= sqrt(2) b. A root that is the middle
// itself was exact as a double, and is rounded to even.
static float nearest_root(double about, const float* x, const float* y) {
  const X87Nearest<X87_EXTENDED> control;
  const bool swapped = upper_magnitude(x) > upper_magnitude(y);
  const long double a = magnitude_of(swapped ? y : x), b = magnitude_of(swapped ? x : y);
  float nearest;
  store_words(&about,
              {(load_words(&about).lower & ~0x1FFFFFFFu) | 0x10000000, load_words(&about).upper});
  const long double middle = load_extended(&about), beyond = a * a - (middle - b) * (middle + b);
  const long double aside = middle * 0x1p-40f;
  put(&nearest, beyond > 0 ? middle + aside : beyond < 0 ? middle - aside : middle);
  control.leave();
  return nearest;
}

template <int kCount>
__attribute__((noinline, cold)) static void settle(const float* x, const float* y,
                                                   const double (&root)[kCount],
                                                   float (&nearest)[kCount]) {
  for (int lane = 0; lane < kCount; ++lane)
    if (is_undecided<kMargin>(root + lane))
      nearest[lane] = nearest_root(root[lane], x + lane, y + lane);
}

template <>
struct Ordinary<float> {
  static constexpr uint32_t kLow = 0;
  static constexpr uint32_t kHigh = 0x7F800000;  // infinity

  template <int kCount>
  static void compute(const float* x, const float* y, float* dst) {
    double result[kCount];
    float nearest[kCount];
#pragma GCC unroll 8
    for (int i = 0; i < kCount; ++i) {
      const long double hypotenuse = root(sum_of_squares(in_memory(x + i), in_memory(y + i)));
      put_copy(result + i, hypotenuse);
      put(nearest + i, hypotenuse);
    }
    if (any_undecided<kMargin>(result)) settle(x, y, result, nearest);
#pragma GCC unroll 8
    for (int i = 0; i < kCount; ++i) store_bits(dst + i, load_bits(nearest + i));
  }
};

template <>
void hypot_extreme(const float* x, const float* y, float* dst) {
  Ordinary<float>::compute<1>(x, y, dst);
}  // not counted: no single is finite and not ordinary

LUX_KERNELS_32F(Hypot, 2_1, hypot<&WideLibrary::Hypot_32f_A24>)
