// SPDX-License-Identifier: MIT
//
// What arc sine, arc cosine and their hyperbolic partners have in common: for z = x + iy with
// x, y >= 0 the numbers u and v of asin z = u + iv, x = sin u cosh v, y = cos u sinh v.
//
//   r = |z + 1|,  s = |z - 1|,  a = (r + s)/2 = cosh v,  m = r s = |z^2 - 1| = sinh^2 v + cos^2 u,
//   q = |z|^2 - 1 = sinh^2 v - cos^2 u,
//   q >= 0    sinh v = sqrt((m + q)/2),   u = the angle of (a y, x sinh v)
//   q <  0    cos u = sqrt((m - q)/2),  sinh v = y / cos u,   u = the angle of (a cos u, x)
//   v = log1p(2 sinh v (sinh v + a)) / 2
//
// Nothing is subtracted but for x - 1, exact where x is near 1, and within q = (x - 1)(x + 1) +
// y^2. Where these two cancel, each is about y^2 <= 1, so the error of q is below 2^-64 times a few
// y^2, and m >= 2y, to which q is added, outweighs it. So sinh v, cos u and a have relative errors
// of a few 2^-64 everywhere, which reach u and v unmagnified: both functions have condition numbers
// of at most 1. Squares of doubles stay inside the extended format.
#ifndef LUX_COMPLEX_ARC_H
#define LUX_COMPLEX_ARC_H

#include "complex/number.h"
#include "extended/angle.h"
#include "extended/logarithm.h"

struct ArcNorms {
  long double a, m;
};

// z is neither infinite nor a NaN, and not 1, where the angle would be that of (0, 0).
static inline ArcNorms arc_norms(long double x, long double y) {
  const long double left = x - 1, right = x + 1, yy = y * y;
  const long double r = processor_root(right * right + yy);
  const long double s = processor_root(left * left + yy);
  return {0.5f * (r + s), r * s};
}

struct ArcRoots {
  long double sine, cosine;  // a multiple of those of u
  long double growth;        // e^2v - 1
};

__attribute__((always_inline)) static inline ArcRoots arc_roots(long double x, long double y,
                                                                const ArcNorms& norms) {
  const auto [a, m] = norms;
  const long double q = (x - 1) * (x + 1) + y * y;
  long double sine, cosine, sinh_v;
  if (q >= 0) {
    sinh_v = processor_root(0.5f * (m + q));
    sine = x * sinh_v;
    cosine = a * y;
  } else {
    const long double cos_u = processor_root(0.5f * (m - q));
    sinh_v = y / cos_u;
    sine = x;
    cosine = a * cos_u;
  }
  return {sine, cosine, 2 * sinh_v * (sinh_v + a)};
}

struct Arc {
  long double sine, cosine, v;
};

static inline Arc arc(long double x, long double y) {
  const ArcRoots roots = arc_roots(x, y, arc_norms(x, y));
  return {roots.sine, roots.cosine, 0.5f * log1p_core(roots.growth)};
}

// Whether |re| + i |im| is such a z.
static inline bool has_arc(const DoubleInMemory& re, const DoubleInMemory& im) {
  const Words x = load_words(&re), y = load_words(&im);
  const uint32_t a = x.upper & ~kSignUpper, b = y.upper & ~kSignUpper;
  if (__builtin_expect(a == 0x3FF00000, false) && !(x.lower | y.lower | b)) return false;
  return a < 0x7FF00000 && b < 0x7FF00000;
}

#endif
