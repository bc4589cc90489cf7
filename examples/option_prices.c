/* SPDX-License-Identifier: MIT
 *
 * Prices of 100,000 call options by the formula of Black and Scholes.
 */
#define _POSIX_C_SOURCE 199309L
#include <luxvmk3.h>

#include "beside_libm.h"

/* An option has three arguments, four intermediate numbers and a price here, 64 bytes. 1024 options
 * take 64 KB, which stay in the second-level cache from one call to the next. Over all options at
 * once, every call would fetch 800 KB from memory and write as much back; in much shorter chunks,
 * starting the calls would take longer than the arithmetic. */
enum { kChunk = 1024 };

static const double kRate = 0.03, kVolatility = 0.2, kRootHalf = 0.70710678118654752;

static double spot[kElements], strike[kElements], years[kElements];
static double ours[kElements], theirs[kElements];

/* The normal distribution of d is erfc(-d / sqrt(2)) / 2. */
static void by_luxvm(void) {
  static double n1[kChunk], n2[kChunk], root[kChunk], discount[kChunk];
  for (int first = 0; first < kElements; first += kChunk) {
    const double *s = spot + first, *k = strike + first, *t = years + first;
    const int n = kElements - first < kChunk ? kElements - first : kChunk;
    luxsDiv_64f_A53(s, k, n1, n);
    luxsLn_64f_A53(n1, n1, n);
    luxsSqrt_64f_A53(t, root, n);
    for (int i = 0; i < n; ++i) {
      const double deviation = kVolatility * root[i];
      const double d1 = (n1[i] + kRate * t[i]) / deviation + 0.5 * deviation;
      n1[i] = -kRootHalf * d1;
      n2[i] = -kRootHalf * (d1 - deviation);
      discount[i] = -kRate * t[i];
    }
    luxsErfc_64f_A53(n1, n1, n);
    luxsErfc_64f_A53(n2, n2, n);
    luxsExp_64f_A53(discount, discount, n);
    for (int i = 0; i < n; ++i) ours[first + i] = 0.5 * (s[i] * n1[i] - k[i] * discount[i] * n2[i]);
  }
}

static void by_libm(void) {
  for (int i = 0; i < kElements; ++i) {
    const double deviation = kVolatility * sqrt(years[i]);
    const double d1 = (log(spot[i] / strike[i]) + kRate * years[i]) / deviation + 0.5 * deviation;
    const double n1 = erfc(-kRootHalf * d1), n2 = erfc(-kRootHalf * (d1 - deviation));
    theirs[i] = 0.5 * (spot[i] * n1 - strike[i] * exp(-kRate * years[i]) * n2);
  }
}

int main(void) {
  for (int i = 0; i < kElements; ++i) {
    spot[i] = spread(i, 0.61803398874989485, 50, 150);
    strike[i] = spread(i, 0.75487766624669276, 50, 150);
    years[i] = spread(i, 0.56984029099805327, 0.1, 5);
  }
  const double time = shortest(by_luxvm), libm_time = shortest(by_libm);
  double largest = 0;
  for (int i = 0; i < kElements; ++i) largest = further(largest, ours[i], theirs[i]);
  return report("option prices (C)", time, libm_time, largest, 1e-12);
}
