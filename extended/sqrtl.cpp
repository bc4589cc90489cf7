// SPDX-License-Identifier: MIT
//
// Square root of one extended number, without division: a short seed and a series.
//
//   x = y 4^n, y in [1, 4), or m in [1, 2) times 1 or 2,
//   r = seed for 1/sqrt(y) at m rounded to a multiple of 1/256: 11 bits,
//   y = hi + lo with 42 bits in hi, so that hi r r is exact,
//   e = (hi r r - 1) + r r lo,  P = ((1 + e)^(-1/2) - 1) / e to e^6,
//   sqrt(x) = ((y (e P r) + lo r) + hi r) 2^n.
//
// Worst error found 0.5012 ulp (sampled against 200 bits).
#include <xmmintrin.h>

#include "core/generated/root_seeds_table.h"  // kRootSeed
#include "extended/generated/sqrtl_table.h"   // kSeries
#include "extended/number.h"

static const double _onetwo[2] = {1.0, 2.0};  // by parity of the exponent

// The significand in one store, the exponent in another: the load of the whole forwards both.
static inline long double scale(int32_t n) {
  static const uint64_t one = 0x8000000000000000u;
  alignas(16) ExtendedWords parts;
  _mm_storel_pi(reinterpret_cast<__m64*>(&parts),
                _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(&one)));
  parts.exponent = uint16_t((n + 16383) & 0x7FFF);
  long double value;
  asm("fldt %1" : "=t"(value) : "m"(parts));
  return value;
}

// 256 m to the nearest integer.
static inline int32_t index(long double m) {
  int32_t nearest;
  asm("fistl %0" : "=m"(nearest) : "t"(m * 256.0f));
  return nearest;
}

long double noxsqrtl_scalar(long double x) {
  ExtendedWords* const parts = reinterpret_cast<ExtendedWords*>(&x);
  if ((parts->exponent & 0x7FFF) == 0x7FFF) return x + kExtendedInfinity;
  if (!(parts->lower | parts->upper | (parts->exponent & 0x7FFF))) return x;
  if (parts->exponent & 0x8000) return kExtendedInfinity * (x - x);  // invalid, not at compile time

  int32_t k = -16383;
  if (parts->exponent == 0) {
    x *= 0x1p200;
    k -= 200;
  }
  k += parts->exponent;
  parts->exponent = 16383;
  const long double m = x;
  const int32_t p = k & 1;
  const long double y = m * _onetwo[p];
  const double r = kRootSeed[256 * p + index(m) - 256];

  const long double t = 4194305.0 * y;
  const long double hi = t - (t - y), lo = y - hi;
  const long double head = hi * r;
  const long double e = (head * r - 1) + (long double)r * r * lo;
  long double P = kSeries[6];
#pragma GCC unroll 6
  for (int i = 5; i >= 0; --i) P = P * e + kSeries[i];
  const long double S = scale((k - p) >> 1);
  return (y * (e * P * r) + lo * r) * S + head * S;
}
