// SPDX-License-Identifier: MIT
//
// Sine, cosine and tangent of one single-precision element of any size, on the x87 unit at 64-bit
// precision: the values of the double functions, rounded to single. What follows is within 2^-34.4 of
// them, and decides the rounding of all but one in 512 elements; those go through the double
// functions.
//
//   |x| < 2^17  x = j pi/32 + z by subtraction (kernels/trig/pi_32.h)
//   beyond      x = m 2^(8b + s), m an integer; m 2^s times 96 bits of 1/(2 pi) from 2^-(8b + 1) on
//               is, modulo 1, the fraction of a turn: six bits of j, the rest is z, to 2^-60.
//               Where x is within 2^-11 of a multiple of pi/2, z is reduced as that of a double.
//
//   sin(j pi/32 + z) = S + (S (cos z - 1) + C sin z), S and C from a table, short series
//   tan(j pi/32 + z) = (S + C tan z) / (C - S tan z)
#include "kernels/trig/large_handler.h"
#include "kernels/trig/turns.h"

constexpr uint32_t kLarge = 0x48000000;  // 2^17

__attribute__((always_inline)) static inline Step large_step(float argument) {
  const uint32_t x = load_bits(&argument);
  const int32_t exponent = int32_t(x >> 23 & 0xFF) - 150, byte = exponent >> 3;
  const uint32_t m = ((x & Format<float>::kFraction) | 0x800000) << (exponent & 7);
  const uint64_t lower =
      product(m, window_word(byte, 3, 1)) + high(product(m, window_word(byte, 3, 0)));
  const uint32_t f = m * window_word(byte, 3, 2) + high(lower);
  constexpr uint32_t kNear = 0x00200000;  // of a quarter turn, 2^-10.4
  if (__builtin_expect((f << 2) + kNear < 2 * kNear, 0)) return large_step(double(argument));
  const uint32_t j = (f + 0x02000000u) >> 26;
  // Signed digits: what the processor converts.
  const int32_t digit = int32_t(uint32_t(lower));
  const int32_t top = int32_t(f - (j << 26)) - (digit >> 31);
  const uint32_t negative = uint32_t(int32_t(x) >> 31);
  return {int32_t((j ^ negative) - negative),
          (top + digit * 0x1p-32L) * pi_32_table.unit[negative & 1].high};
}

__attribute__((always_inline)) static inline Step step_of(const float* x) {
  return magnitude<float>(load_bits(x)) < kLarge ? nearest_step(in_memory(x))
                                                 : large_step(in_memory(x));
}

// Whether y, as a double, is within 2^-33 of the middle between two singles, too near to be
// rounded.
static inline bool is_open(const double* y) {
  constexpr uint32_t kMiddle = 0x10000000, kMargin = 0x80000;  // in the lower word
  return ((load_words(y).lower - (kMiddle - kMargin)) & 0x1FFFFFFF) < 2 * kMargin;
}

static inline bool is_open(long double y) {
  double copy;
  put_copy(&copy, y);
  return __builtin_expect(is_open(&copy), 0);
}

// sin z and cos z - 1
struct Series {
  long double sine, cosine1;
};

static inline Series series(long double z) {
  const double *const s = pi_32_table.sine3, *const c = pi_32_table.cosine2;
  const long double z2 = z * z;
  return {(s[1] * z2 + s[0]) * (z2 * z) + z, (c[1] * z2 + c[0]) * z2};
}

static inline long double sine_of(uint32_t j, const Series& z) {
  const Pair* const s = pi_32_table.sine + (j & 63);
  return s[0].high + (s[0].high * z.cosine1 + s[16].high * z.sine);
}

LUX_SCALAR long double _dSin(const float* x) {
  if (is_zero<float>(load_bits(x))) return in_memory(x);
  const Step step = step_of(x);
  const long double y = sine_of(uint32_t(step.j), series(step.z));
  return is_open(y) ? double_sine(double(in_memory(x))) : y;
}

LUX_SCALAR long double _dCos(const float* x) {
  const Step step = step_of(x);
  const long double y = sine_of(uint32_t(step.j) + 16, series(step.z));
  return is_open(y) ? double_cosine(double(in_memory(x))) : y;
}

LUX_SCALAR long double _dTan(const float* x) {
  if (is_zero<float>(load_bits(x))) return in_memory(x);
  const long double y = tan_of(step_of(x));
  return is_open(y) ? double_tangent(double(in_memory(x))) : y;
}

// The sine; the cosine through the pointer.
LUX_SCALAR long double _dSinCos(const float* x, float* cosine) {
  const float argument = in_memory(x);  // the cosine may go to the same place
  if (is_zero<float>(load_bits(x))) {
    in_memory(cosine) = 1;
    return argument;
  }
  const Step step = step_of(x);
  const Series z = series(step.z);
  const long double y1 = sine_of(uint32_t(step.j), z), y2 = sine_of(uint32_t(step.j) + 16, z);
  double copy[2];
  put_copy(copy, y1);
  put_copy(copy + 1, y2);
  if (__builtin_expect(is_open(copy) | is_open(copy + 1), 0)) {
    in_memory(cosine) = float(double_cosine(double(argument)));
    return double_sine(double(argument));
  }
  in_memory(cosine) = float(y2);
  return y1;
}

LUX_HANDLERS(s, float, HA)
LUX_HANDLERS(s, float, LA)
LUX_HANDLERS(s, float, A11)
