// SPDX-License-Identifier: MIT
//
// The logarithm of log.h for routines that need its last bits.
#ifndef LUX_EXTENDED_CAREFUL_LOG_H
#define LUX_EXTENDED_CAREFUL_LOG_H

#include "extended/log.h"
#include "extended/two_part.h"

// log((1 + f) 2^exponent), 1 + f in the cell: log_sum with less rounding. The head of f has 32
// bits after the point, c and c - 1 have ten.
static long double careful_log_sum(const TwoPart& f, const LogCell& cell, int32_t exponent) {
  const long double head = (f.high + 0x1.8p31L) - 0x1.8p31L;
  const TwoPart exact = exact_sum(head * cell.c + cell.c1, (f.high - head) * cell.c);
  const long double r = exact.high, w = r * r, rest = exact.low + f.low * cell.c;
  const double* const s = kLog.series;
  const long double series = (s[0] + s[1] * r) + w * ((s[2] + s[3] * r) + w * s[4]);
  const long double high = exponent * (long double)kLog.two_high + cell.high;
  const long double low = exponent * (long double)kLog.two_low + cell.low;
  const TwoPart sum = ordered_sum(high, r);  // high is 0 or larger than r
  return sum.high + (sum.low + (low + (rest + w * (series * r - 0.5f))));
}

#endif
