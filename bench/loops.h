// SPDX-License-Identifier: MIT
//
// What a program does without the library: a loop over the C library's function or the operator. One
// source, compiled twice, as `gcc -m32 -O2` does and as `gcc -m32 -O2 -msse2 -mfpmath=sse` does, built-in
// functions included.
#ifndef LUX_BENCH_LOOPS_H
#define LUX_BENCH_LOOPS_H

#include <stdint.h>

namespace bench {

struct PlainLoop {
  const char *family, *type;
  // `times` times over the arrays; null where there is none.
  void (*run)(const void* const source[2], void* const destination[2], int32_t len, int32_t times);
};

struct PlainLoops {
  const PlainLoop *first, *last;
};

extern const PlainLoops kLoops387, kLoopsSse2;

}  // namespace bench

#endif
