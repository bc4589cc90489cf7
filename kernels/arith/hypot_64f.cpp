// SPDX-License-Identifier: MIT
//
// Hypotenuse of double-precision arrays. Arguments that are both below 2^-523 are multiplied by
// 2^1000 first. No other sum of squares is kept from leaving the range of doubles.
//
// Squares and sum are rounded to 53 bits each, which counts most just above x^2 = 2, y^2 = 1: a
// result is off by up to 1.25/sqrt(3) + 0.5 = 1.222 ulp. Worst error found 1.2169 ulp, at
// 0x3FF6AA9B990C98D2, 0x3FF00485EC8D5A6A (sampled).
#include "kernels/arith/hypot.h"

template <>
struct Ordinary<double> {
  static constexpr uint32_t kLow = 0x20000000;   // 2^-511: sums are at least 2^-1022
  static constexpr uint32_t kHigh = 0x5F800000;  // 2^505: sums are finite
};

// The double that a store would give, out of the range of normal doubles too, without the overflow
// or underflow that a store would raise: those are not the result's. Added to the smallest normal
// number a sum below it is rounded where a subnormal ends.
static inline void any_sum_of_squares(long double x, long double y, double* d) {
  static const double smallest = 0x1p-1022;
  const long double sum = sum_of_squares(x, y);
  if (sum >= power_of_two(1024)) {
    store_bits(d, Format<double>::kInf);
  } else if (sum < smallest) {
    put(d, sum + smallest);
    store_bits(d, load_bits(d) - load_bits(&smallest));
  } else {
    put(d, sum);
  }
}

// The sum is stored as a double M 4^k, 1 <= M < 4, whose fields are read as they are, also those of
// infinity and of a subnormal: the results of such sums are sqrt(M) 2^k, and the reference lists them.
template <>
void hypot_extreme(const double* x, const double* y, double* dst) {
  constexpr uint32_t kTiny = 500 << 20;  // 2^-523
  const bool tiny = upper_magnitude(x) < kTiny && upper_magnitude(y) < kTiny;
  const double scale = tiny ? 0x1p+1000 : 1.0;
  double d, m;
  any_sum_of_squares(in_memory(x) * scale, in_memory(y) * scale, &d);
  const uint64_t sum = load_bits(&d);
  const int32_t exponent = int32_t(sum >> 52) - Format<double>::kBias, parity = exponent & 1;
  store_bits(&m, (sum & Format<double>::kFraction) | uint64_t(Format<double>::kBias + parity)
                                                         << 52);
  in_memory(dst) = double(root(m) * power_of_two((exponent - parity) / 2 - (tiny ? 1000 : 0)));
}

LUX_KERNELS_64F(Hypot, 2_1, hypot<&WideLibrary::Hypot_64f_A53>)
