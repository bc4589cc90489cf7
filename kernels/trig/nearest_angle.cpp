// SPDX-License-Identifier: MIT
//
// The single nearest to the angle of a point, where the doubles of atan2_32f.cpp leave it open: by
// the kernel of doubles, which is off by little more than half a last place, and where that is beside
// the middle of two singles, by integers of 224 bits:
//
//   t = atan(u) = u/(1 + u^2) (1 + 2/3 w (1 + 4/5 w (1 + 6/7 w (...)))),  w = u^2/(1 + u^2) <= 1/2,
//   u the smaller quotient; then t, pi/2 - t, pi - t or pi/2 + t.
//
// Below 2^-27 no quotient comes here: n/d of singles is further than 2^-49 of itself from every middle,
// and atan(u) nearer to u than 2^-55; nor is pi/2 or pi so near to one. That leaves fewer than 2^56
// quotients and quadrants, of which one is expected to be within 2^-81 of a middle; that one is
// within 2^-190, the error of the integers, has the chance 2^-109. None is a middle: the tangent of
// a rational number is none.
#include "kernels/trig/nearest_angle.h"

#include "kernels/long_number.h"
#include "kernels/nearest_32f.h"

extern "C" __attribute__((visibility("hidden"))) Status _noxomp_luxsAtan2_64f_A53(const double* y,
                                                                                  const double* x,
                                                                                  double* dst,
                                                                                  int32_t len);

constexpr int32_t kTerms = 224;  // w^224 <= 2^-224

// 1/a by Newton's iteration, 1 <= a <= 2: 1 - 3/4 a is at most 1/2, and is squared each time.
static LongNumber reciprocal(const LongNumber& a) {
  constexpr LongNumber kTwo = {{2}};
  LongNumber r = {{0, 0xC0000000}};
  for (int i = 0; i < 8; ++i) r = r * (kTwo - a * r);
  return r;
}

static LongNumber arctangent(const LongNumber& u) {
  LongNumber square = u * u, sum = square;
  ++sum.word[0];
  const LongNumber r = reciprocal(sum), w = square * r;
  sum = {{1}};
  for (uint32_t k = kTerms; k > 0; --k) {
    sum = sum * w;
    multiply(&sum, 2 * k);
    divide(&sum, 2 * k + 1);
    ++sum.word[0];
  }
  return sum * (u * r);
}

// A magnitude's significand, with the leading bit of a normal number, and its exponent's field; the
// subnormals' is that of the least normal numbers.
static uint32_t significand(uint32_t a) {
  using Single = Format<float>;
  return (a & Single::kFraction) | (a < Single::kSmallestNormal ? 0 : Single::kSmallestNormal);
}
static uint32_t field(uint32_t a) {
  return a < Format<float>::kSmallestNormal ? 1 : a >> Format<float>::kFractionBits;
}

// n <= d
static LongNumber quotient(uint32_t n, uint32_t d) {
  LongNumber u = {{significand(n)}};
  divide(&u, significand(d));
  for (uint32_t apart = field(d) - field(n); apart > 0; --apart) half(&u);
  return u;
}

// Without the sign of y.
static long double long_angle(uint32_t y, uint32_t x) {
  const uint32_t a = magnitude<float>(y), b = magnitude<float>(x);
  const bool is_left = x != b;
  LongNumber t = arctangent(a > b ? quotient(b, a) : quotient(a, b));
  LongNumber pi = kLongHalfPi;
  multiply(&pi, 2);
  if (a > b) t = kLongHalfPi - t;
  if (is_left) t = pi - t;
  return on_its_side(t);
}

float noxs_nearest_angle(const float* y, const float* x) {
  double ordinate, abscissa, angle;
  float nearest;
  put(&ordinate, load_extended(y));
  put(&abscissa, load_extended(x));
  _noxomp_luxsAtan2_64f_A53(&ordinate, &abscissa, &angle, 1);
  if (!is_undecided<2>(&angle)) {
    put(&nearest, load_extended(&angle));
    return nearest;
  }
  const X87Nearest<X87_EXTENDED> control;
  put(&nearest, long_angle(load_bits(y), load_bits(x)));
  control.leave();
  store_bits(&nearest, load_bits(&nearest) | (load_bits(y) & Format<float>::kSign));
  return nearest;
}
