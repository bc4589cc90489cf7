// SPDX-License-Identifier: MIT
#ifndef LUX_KERNELS_EXPLOG_LOG_32F_TABLE_H
#define LUX_KERNELS_EXPLOG_LOG_32F_TABLE_H

struct LogTable {
  struct {
    double c3, c2, c1, c0;
  } cubic[256];
  double exponent[256];  // (field - 127) log 2, since a memory operand costs nothing
  long double two;       // log 2
};

#endif
