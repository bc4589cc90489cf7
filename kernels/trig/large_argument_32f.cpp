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
#include "kernels/screens.h"
#include "kernels/trig/large_handler.h"
#include "kernels/trig/turns.h"

constexpr uint32_t kLarge = 0x48000000;  // 2^17

// x / (2 pi) modulo 1: j / 64, and the rest in signed digits of 32 bits, which the processor converts.
struct Fraction {
  uint32_t j;
  int32_t top, lower;
  uint32_t negative;  // all ones or 0
  bool near;          // 2^-10.4 from a multiple of pi/2, or less
};

__attribute__((always_inline)) static inline Fraction fraction_of(uint32_t x) {
  const int32_t exponent = int32_t(x >> 23 & 0xFF) - 150, byte = exponent >> 3;
  const uint32_t m = ((x & Format<float>::kFraction) | 0x800000) << (exponent & 7);
  const uint64_t lower =
      product(m, window_word(byte, 3, 1)) + high(product(m, window_word(byte, 3, 0)));
  const uint32_t f = m * window_word(byte, 3, 2) + high(lower);
  constexpr uint32_t kNear = 0x00200000;  // of a quarter turn
  const uint32_t j = (f + 0x02000000u) >> 26;
  const int32_t digit = int32_t(uint32_t(lower));
  return {j, int32_t(f - (j << 26)) - (digit >> 31), digit, uint32_t(int32_t(x) >> 31),
          (f << 2) + kNear < 2 * kNear};
}

__attribute__((always_inline)) static inline Step step_of(const Fraction& f) {
  return {int32_t((f.j ^ f.negative) - f.negative),
          (f.top + f.lower * 0x1p-32L) * pi_32_table.unit[f.negative & 1].high};
}

__attribute__((always_inline)) static inline Step large_step(float argument) {
  const Fraction f = fraction_of(load_bits(&argument));
  return __builtin_expect(f.near, 0) ? large_step(double(argument)) : step_of(f);
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

// ---- Blocks of elements that are all large

// And not all within the bound.
static inline bool all_large(const float* x, uint32_t bound) {
  uint32_t beyond = 0, outside_of = 0;
#pragma GCC unroll 4
  for (int32_t lane = 0; lane < 4; ++lane) {
    const uint32_t m = upper_magnitude(x + lane);
    beyond |= bound - m;
    outside_of |= outside(m, kLarge, Format<float>::kInf);
  }
  return sign_bit(beyond & ~outside_of);
}

// The products of four elements come first: the chains behind them then overlap. result(at, step, y)
// stores what it computes, and leaves it in y as doubles; again(at, x) takes what is open.
template <int32_t kResults, class Result, class Again>
__attribute__((always_inline)) static inline int32_t large_blocks(const float* src, int32_t i,
                                                                  int32_t last, uint32_t bound,
                                                                  Result result, Again again) {
  if (!all_large(src + i, bound)) return i;
  const uint16_t control = x87_enter(X87_EXTENDED);
  for (; i < last && all_large(src + i, bound); i += 4) {
    Fraction f[4];
    float x[4];
    bool near = false;
    for (int32_t lane = 0; lane < 4; ++lane) {
      const uint32_t bits = load_bits(src + i + lane);
      store_bits(x + lane, bits);
      f[lane] = fraction_of(bits);
      near |= f[lane].near;
    }
    if (__builtin_expect(near, 0)) break;
    double y[4][kResults];
    for (int32_t lane = 0; lane < 4; ++lane) result(i + lane, step_of(f[lane]), y[lane]);
    for (int32_t lane = 0; lane < 4; ++lane) {
      bool open = is_open(y[lane]);
      if (kResults == 2) open |= is_open(y[lane] + 1);
      if (__builtin_expect(open, 0)) again(i + lane, double(x[lane]));
    }
  }
  x87_leave(control, X87_EXTENDED);
  return i;
}

static inline void store_both(float* to, double* copy, long double y) {
  put_copy(copy, y);
  in_memory(to) = float(y);
}

int32_t noxs_large_sines(const float* src, float* dst, int32_t i, int32_t last, uint32_t bound) {
  return large_blocks<1>(
      src, i, last, bound,
      [=](int32_t at, const Step& step, double* y) {
        store_both(dst + at, y, sine_of(uint32_t(step.j), series(step.z)));
      },
      [=](int32_t at, double x) { in_memory(dst + at) = float(double_sine(x)); });
}

int32_t noxs_large_cosines(const float* src, float* dst, int32_t i, int32_t last, uint32_t bound) {
  return large_blocks<1>(
      src, i, last, bound,
      [=](int32_t at, const Step& step, double* y) {
        store_both(dst + at, y, sine_of(uint32_t(step.j) + 16, series(step.z)));
      },
      [=](int32_t at, double x) { in_memory(dst + at) = float(double_cosine(x)); });
}

int32_t noxs_large_tangents(const float* src, float* dst, int32_t i, int32_t last, uint32_t bound) {
  return large_blocks<1>(
      src, i, last, bound,
      [=](int32_t at, const Step& step, double* y) { store_both(dst + at, y, tan_of(step)); },
      [=](int32_t at, double x) { in_memory(dst + at) = float(double_tangent(x)); });
}

int32_t noxs_large_sincos(const float* src, float* dst_sin, float* dst_cos, int32_t i, int32_t last,
                          uint32_t bound) {
  return large_blocks<2>(
      src, i, last, bound,
      [=](int32_t at, const Step& step, double* y) {
        const Series z = series(step.z);
        store_both(dst_cos + at, y + 1, sine_of(uint32_t(step.j) + 16, z));
        store_both(dst_sin + at, y, sine_of(uint32_t(step.j), z));
      },
      [=](int32_t at, double x) {
        in_memory(dst_cos + at) = float(double_cosine(x));
        in_memory(dst_sin + at) = float(double_sine(x));
      });
}

LUX_HANDLERS(s, float, HA)
LUX_HANDLERS(s, float, LA)
LUX_HANDLERS(s, float, A11)
