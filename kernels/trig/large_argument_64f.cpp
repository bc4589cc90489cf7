// SPDX-License-Identifier: MIT
//
// Sine, cosine and tangent of one element of any size, on the x87 unit at 64-bit precision: results
// are rounded once, from 64 bits.
//
//   tiny        x or 1, and inexact
//   |x| < 2^17  x = j pi/32 + z by subtraction (kernels/trig/pi_32.h)
//   beyond      x = m 2^(8b + s), m an integer; m 2^s times the bits of 1/(2 pi) from 2^-(8b + 1)
//               on is, modulo 1, the fraction of a turn: six bits of j, the rest is z. Where x is
//               within 2^-25 of a multiple of pi/2, z is the pair of noxreduce_pio2d.
//
//   sin(j pi/32 + z) = S + (S (cos z - 1) + C sin z), S and C from a table, Taylor series
//   tan(j pi/32 + z) = (S + C tan z) / (C - S tan z)
#include "kernels/screens.h"
#include "kernels/trig/large_handler.h"
#include "kernels/trig/turns.h"

constexpr int32_t kTinyExponent = 771;    // biased: |x| < 2^-252
constexpr int32_t kLargeExponent = 1040;  // biased: |x| >= 2^17

static inline int32_t biased_exponent(Words x) { return int32_t(x.upper >> 20 & 0x7FF); }

// |x| as an integer times 2^(8 byte).
struct Scaled {
  uint32_t lower, upper;  // 60 bits
  int32_t byte;
};

static inline Scaled scaled(Words x) {
  const int32_t exponent = biased_exponent(x) - 1075;
  uint32_t upper = (x.upper & Upper<double>::kFraction) | 0x100000;
  const uint32_t shift = exponent & 7;
  asm("shldl %%cl, %1, %0" : "+r"(upper) : "r"(x.lower), "c"(shift) : "cc");
  return {x.lower << shift, upper, exponent >> 3};
}

// |x| / (2 pi) modulo 1, in words, the most significant one last.
constexpr int32_t kTurnWords = 8;
static void turn(Words x, uint32_t (&sum)[kTurnWords]) {
  const Scaled m = scaled(x);
  uint32_t lower = 0, upper = 0, before = 0;
  for (int32_t i = 0; i < kTurnWords; ++i) {
    const uint32_t word = window_word(m.byte, kTurnWords, i);
    const uint64_t first = product(m.lower, word) + lower;
    const uint64_t second = product(m.upper, before) + uint32_t(first) + upper;
    sum[i] = uint32_t(second);
    lower = high(first);
    upper = high(second);
    before = word;
  }
}

// The fraction's leading 110 bits after its zeros are cut into digits so short that the products of
// the upper ones with those of pi/2 are exact even at 53-bit precision.
int32_t noxreduce_pio2d(double x, double* reduced) {
  const Words words = load_words(&x);
  const uint32_t negative = words.upper >> 31;
  if (biased_exponent(words) < 1022) {
    reduced[0] = x;
    reduced[1] = 0;
    return 0;
  }
  uint32_t f[kTurnWords];
  turn(words, f);
  const uint32_t quadrant = (f[7] + 0x20000000u) >> 30;
  f[7] -= quadrant << 30;
  uint32_t sign = f[7] >> 31;
  uint32_t carry = sign;
  for (uint32_t& word : f) {
    word = (word ^ (0 - sign)) + carry;
    carry &= word == 0;
  }
  int32_t last = kTurnWords - 1;
  while (f[last] == 0) --last;
  const int32_t zeros = __builtin_clz(f[last]);
  const auto word = [&](int32_t i) {
    return uint32_t((uint64_t(f[last - i]) << 32 | f[last - i - 1]) << zeros >> 32);
  };
  const uint32_t w3 = word(0), w2 = word(1), w1 = word(2), w0 = word(3);
  sign ^= negative;
  const double unit =
      double(power_of_two(32 * (last - kTurnWords) + 2 - zeros)) * (sign ? -1.0 : 1.0);
  const double d0 = double(int32_t(w3 >> 7)) * 0x1p7;
  const double d1 = double(int32_t((w3 & 127) << 19 | w2 >> 13)) * 0x1p-19;
  const double d2 = double(int32_t((w2 & 0x1FFF) << 14 | w1 >> 18)) * 0x1p-46;
  const double d3 = double(int32_t((w1 & 0x3FFFF) << 13 | w0 >> 19)) * 0x1p-77;
  const double p0 = kHalfPi[0], p1 = kHalfPi[1], p2 = kHalfPi[2];
  const double a = d0 * p0, b = d0 * p1 + d1 * p0;
  const double head = store_f64(a + b);
  const double low = (a - head) + b;
  const double tail = low + (d1 * p1 + ((d0 + d1) * p2 + (d2 + d3) * (p0 + p1)));
  const double sum = store_f64(head + tail);
  reduced[0] = sum * unit;
  reduced[1] = ((head - sum) + tail) * unit;
  return int32_t((quadrant ^ (0 - negative)) + negative) & 3;
}

// x / (2 pi) modulo 1: j / 64, and the rest in signed digits of 32 bits, which the processor converts.
struct Fraction {
  uint32_t j;
  int32_t top, middle, lower;
  uint32_t negative;  // all ones or 0
  bool near;          // x is next to a multiple of pi/2, where too many leading words vanish
};

// Three words of m times a window of five, from the third on, with the carries of the two below; in
// assembly, for the compiler keeps every sum of two words as four.
struct ThreeWords {
  uint32_t word[3];
};

// Six registers are all there are, so no instrumentation fits beside this.
__attribute__((no_sanitize("address", "undefined"))) static inline ThreeWords turns_of(
    uint32_t lower, uint32_t upper, const uint8_t* window) {
  uint32_t f0, f1, f2;
  asm("movl 4(%[w]), %%eax\n\tmull %[lower]\n\tmovl %%edx, %[f0]\n\t"
      "movl (%[w]), %%eax\n\tmull %[upper]\n\txorl %[f1], %[f1]\n\txorl %[f2], %[f2]\n\t"
      "addl %%edx, %[f0]\n\tadcl $0, %[f1]\n\t"
      "movl 8(%[w]), %%eax\n\tmull %[lower]\n\t"
      "addl %%eax, %[f0]\n\tadcl %%edx, %[f1]\n\tadcl $0, %[f2]\n\t"
      "movl 4(%[w]), %%eax\n\tmull %[upper]\n\t"
      "addl %%eax, %[f0]\n\tadcl %%edx, %[f1]\n\tadcl $0, %[f2]\n\t"
      "movl 12(%[w]), %%eax\n\tmull %[lower]\n\taddl %%eax, %[f1]\n\tadcl %%edx, %[f2]\n\t"
      "movl 8(%[w]), %%eax\n\tmull %[upper]\n\taddl %%eax, %[f1]\n\tadcl %%edx, %[f2]\n\t"
      "movl 16(%[w]), %%eax\n\timull %[lower], %%eax\n\taddl %%eax, %[f2]\n\t"
      "movl 12(%[w]), %%eax\n\timull %[upper], %%eax\n\taddl %%eax, %[f2]"
      : [f0] "=&r"(f0), [f1] "=&r"(f1), [f2] "=&r"(f2)
      : [w] "r"(window), [lower] "m"(lower), [upper] "m"(upper)
      : "eax", "edx", "cc");
  return {{f0, f1, f2}};
}

__attribute__((always_inline)) static inline Fraction fraction_of(const double* x) {
  const Words words = load_words(x);
  const Scaled m = scaled(words);
  const ThreeWords t = turns_of(m.lower, m.upper, window_address(m.byte, 5));
  const uint32_t whole = (t.word[2] + 0x02000000u) & 0xFC000000u;
  uint32_t top = t.word[2] - whole, middle = t.word[1], sign = t.word[0];
  asm("addl %2, %2\n\tadcl $0, %1\n\tadcl $0, %0" : "+r"(top), "+r"(middle), "+r"(sign) : : "cc");
  Fraction f;
  f.negative = uint32_t(int32_t(words.upper) >> 31);
  f.j = whole >> 26;
  f.near = (t.word[2] << 2) + 64 < 128;
  f.top = int32_t(top + (middle >> 31));
  f.middle = int32_t(middle);
  f.lower = int32_t(t.word[0]);
  return f;
}

__attribute__((always_inline)) static inline Step step_of(const Fraction& f) {
  const Pair& unit = pi_32_table.unit[f.negative & 1];
  const long double rest = (f.top + f.middle * 0x1p-32L) + f.lower * 0x1p-64L;
  return {int32_t((f.j ^ f.negative) - f.negative), rest * unit.high + rest * unit.low};
}

static Step near_step(const double* x) {
  double pair[2];
  const int32_t quadrant = noxreduce_pio2d(in_memory(x), pair);
  return {16 * quadrant, (long double)pair[0] + pair[1]};
}

__attribute__((always_inline)) static inline Step fraction_step(const double* x) {
  const Fraction f = fraction_of(x);
  return __builtin_expect(f.near, 0) ? near_step(x) : step_of(f);
}

__attribute__((always_inline)) static inline Step step_of(const double* x) {
  return biased_exponent(load_words(x)) < kLargeExponent ? nearest_step(in_memory(x))
                                                         : fraction_step(x);
}

// ---- The functions of one finite double

static inline bool is_tiny(const double* x) {
  return biased_exponent(load_words(x)) < kTinyExponent;
}

static inline long double tiny_sine(double x) {
  return is_zero<double>(load_bits(&x)) ? x : store_f64(x * 0x1p55 - x) * 0x1p-55L;
}

// sin z and cos z - 1
struct Series {
  long double sine, cosine1;
};

static inline Series series(long double z) {
  const double *const s = pi_32_table.sine3, *const c = pi_32_table.cosine2;
  const long double z2 = z * z;
  return {(((s[3] * z2 + s[2]) * z2 + s[1]) * z2 + s[0]) * (z2 * z) + z,
          (((c[3] * z2 + c[2]) * z2 + c[1]) * z2 + c[0]) * z2};
}

static inline long double sine_of(uint32_t j, const Series& z) {
  const Pair& s = pi_32_table.sine[j & 63];
  return s.high + (s.low + (s.high * z.cosine1 + sum(pi_32_table.sine[(j & 63) + 16]) * z.sine));
}

LUX_SCALAR long double _dSin(const double* x) {
  if (is_tiny(x)) return tiny_sine(in_memory(x));
  const Step step = step_of(x);
  return sine_of(uint32_t(step.j), series(step.z));
}

LUX_SCALAR long double _dCos(const double* x) {
  if (is_tiny(x)) {
    const long double tiny = in_memory(x);
    return 1 - tiny;
  }
  const Step step = step_of(x);
  return sine_of(uint32_t(step.j) + 16, series(step.z));
}

LUX_SCALAR long double _dTan(const double* x) {
  if (is_tiny(x)) return tiny_sine(in_memory(x));
  return tan_of(step_of(x));
}

// The sine; the cosine through the pointer.
LUX_SCALAR long double _dSinCos(const double* x, double* cosine) {
  if (is_tiny(x)) {
    const double tiny = in_memory(x);  // the cosine may go to the same place
    in_memory(cosine) = double(1 - (long double)tiny);
    return tiny_sine(tiny);
  }
  const Step step = step_of(x);
  const Series z = series(step.z);
  in_memory(cosine) = double(sine_of(uint32_t(step.j) + 16, z));
  return sine_of(uint32_t(step.j), z);
}

// ---- Blocks of elements that are all large

static inline bool all_large(const double* x) {
  constexpr uint32_t kLarge = uint32_t(kLargeExponent) << 20;
  return none_outside<4>(
      [=](int lane) { return outside(upper_magnitude(x + lane), kLarge, Upper<double>::kInf); });
}

// The products of four elements come first: the chains behind them then overlap.
template <class Result>
__attribute__((always_inline)) static inline int32_t large_blocks(const double* src, int32_t i,
                                                                  int32_t last, Result result) {
  for (; i < last && all_large(src + i); i += 4) {
    Fraction f[4];
    bool near = false;
    for (int32_t lane = 0; lane < 4; ++lane) {
      f[lane] = fraction_of(src + i + lane);
      near |= f[lane].near;
    }
    if (__builtin_expect(near, 0)) break;
    for (int32_t lane = 0; lane < 4; ++lane) result(i + lane, step_of(f[lane]));
  }
  return i;
}

int32_t noxd_large_sines(const double* src, double* dst, int32_t i, int32_t last) {
  return large_blocks(src, i, last, [=](int32_t at, const Step& step) {
    in_memory(dst + at) = double(sine_of(uint32_t(step.j), series(step.z)));
  });
}

int32_t noxd_large_cosines(const double* src, double* dst, int32_t i, int32_t last) {
  return large_blocks(src, i, last, [=](int32_t at, const Step& step) {
    in_memory(dst + at) = double(sine_of(uint32_t(step.j) + 16, series(step.z)));
  });
}

int32_t noxd_large_tangents(const double* src, double* dst, int32_t i, int32_t last) {
  return large_blocks(src, i, last, [=](int32_t at, const Step& step) {
    in_memory(dst + at) = double(tan_of(step));
  });
}

int32_t noxd_large_sincos(const double* src, double* dst_sin, double* dst_cos, int32_t i,
                          int32_t last) {
  return large_blocks(src, i, last, [=](int32_t at, const Step& step) {
    const Series z = series(step.z);
    in_memory(dst_cos + at) = double(sine_of(uint32_t(step.j) + 16, z));
    in_memory(dst_sin + at) = double(sine_of(uint32_t(step.j), z));
  });
}

Step large_step(const double& x) { return fraction_step(&x); }
double double_sine(const double& x) { return store_f64(double(_dSin(&x))); }
double double_cosine(const double& x) { return store_f64(double(_dCos(&x))); }
double double_tangent(const double& x) { return store_f64(double(_dTan(&x))); }

LUX_HANDLERS(d, double, HA)
LUX_HANDLERS(d, double, LA)
LUX_HANDLERS(d, double, A11)
