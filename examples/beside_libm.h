/* SPDX-License-Identifier: MIT
 *
 * What the examples with 100,000 elements share: numbers to compute with, a clock, and the line that
 * each prints.
 */
#ifndef BESIDE_LIBM_H
#define BESIDE_LIBM_H

#include <math.h>
#include <stdio.h>
#include <time.h>

enum { kElements = 100000, kRounds = 7 };

/* Between low and high, evenly spread over the elements; `step` is irrational, another one for each
 * array. */
static inline double spread(int i, double step, double low, double high) {
  const double x = i * step;
  return low + (high - low) * (x - floor(x));
}

static inline double milliseconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1e3 + now.tv_nsec * 1e-6;
}

/* The shortest of some runs, in milliseconds. */
static inline double shortest(void (*compute)(void)) {
  double least = HUGE_VAL;
  for (int round = 0; round < kRounds; ++round) {
    const double start = milliseconds();
    compute();
    least = fmin(least, milliseconds() - start);
  }
  return least;
}

/* A NaN is further away than anything. */
static inline double further(double largest, double ours, double libm) {
  const double apart = fabs(ours - libm);
  return apart <= largest ? largest : apart;
}

/* The program's exit code: 1 where the difference is above the bound. */
static inline int report(const char* what, double ours, double libm, double largest, double bound) {
  printf("%-30s luxvm %7.3f ms  libm %7.3f ms  largest difference %.2g (at most %.2g)\n", what,
         ours, libm, largest, bound);
  return largest <= bound ? 0 : 1;
}

#endif
