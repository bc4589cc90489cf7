// SPDX-License-Identifier: MIT
//
// Sine, cosine and tangent of one single-precision element of any size, on the x87 unit at 64-bit
// precision.
//
//   |x| < 2^17  x = j pi/32 + z by subtraction (kernels/trig/pi_32.h)
//   beyond      x = m 2^(8b + s), m an integer; m 2^s times 96 bits of 1/(2 pi) from 2^-(8b + 1) on
//               is, modulo 1, the fraction of a turn: six bits of j, the rest is z. No single is so
//               near to a multiple of pi/2 that more bits were needed.
//
//   sin(j pi/32 + z) = S + (S (cos z - 1) + C sin z), S and C from a table, short series
//   tan(j pi/32 + z) = (S + C tan z) / (C - S tan z)
#include "kernels/trig/large_handler.h"
#include "kernels/trig/pi_32.h"
#include "kernels/trig/turns.h"

constexpr uint32_t kLarge = 0x48000000;  // 2^17

static inline Step large_step(uint32_t x) {
  const int32_t exponent = int32_t(x >> 23 & 0xFF) - 150, byte = exponent >> 3;
  const uint32_t m = ((x & 0x7FFFFF) | 0x800000) << (exponent & 7);
  const uint64_t lower =
      product(m, window_word(byte, 3, 1)) + high(product(m, window_word(byte, 3, 0)));
  const uint32_t f = m * window_word(byte, 3, 2) + high(lower);
  const uint32_t j = (f + 0x02000000u) >> 26;
  // Signed digits: what the processor converts.
  const int32_t digit = int32_t(uint32_t(lower));
  const int32_t top = int32_t(f - (j << 26)) - (digit >> 31);
  const uint32_t negative = uint32_t(int32_t(x) >> 31);
  return {int32_t((j ^ negative) - negative),
          (top + digit * 0x1p-32L) * pi_32_table.unit[negative & 1].high};
}

static inline Step step_of(const float* x) {
  const uint32_t pattern = load_bits(x);
  return magnitude<float>(pattern) < kLarge ? nearest_step(*x) : large_step(pattern);
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
  if (is_zero<float>(load_bits(x))) return *x;
  const Step step = step_of(x);
  return sine_of(uint32_t(step.j), series(step.z));
}

LUX_SCALAR long double _dCos(const float* x) {
  const Step step = step_of(x);
  return sine_of(uint32_t(step.j) + 16, series(step.z));
}

LUX_SCALAR long double _dTan(const float* x) {
  if (is_zero<float>(load_bits(x))) return *x;
  return tan_of(step_of(x));
}

// The sine; the cosine through the pointer.
LUX_SCALAR long double _dSinCos(const float* x, float* cosine) {
  const bool zero = is_zero<float>(load_bits(x));
  const Step step = step_of(x);
  const Series z = series(step.z);
  const long double sine = zero ? *x : sine_of(uint32_t(step.j), z);
  *cosine = float(sine_of(uint32_t(step.j) + 16, z));
  return sine;
}

LUX_HANDLERS(s, float, HA)
LUX_HANDLERS(s, float, LA)
LUX_HANDLERS(s, float, A11)
