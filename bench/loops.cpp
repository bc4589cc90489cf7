// SPDX-License-Identifier: MIT
//
// LUX_LOOPS is the name of what one compilation gives. Everything else is private to the file and no
// standard class is used: the linker could otherwise take an inline function that was compiled for SSE2
// for code that must run without.
#include "bench/loops.h"

#include <math.h>

namespace bench {
namespace {

using Complex32 = _Complex float;
using Complex64 = _Complex double;

// One body for every shape: STEP computes element i. noinline: a test looks for the calls in them.
#define LOOP(name, E, STEP)                                                                    \
  __attribute__((noinline)) void name(const void* const source[2], void* const destination[2], \
                                      int32_t len, int32_t times) {                            \
    [[maybe_unused]] const E* const src1 = static_cast<const E*>(source[0]);                   \
    [[maybe_unused]] const E* const src2 = static_cast<const E*>(source[1]);                   \
    [[maybe_unused]] E* const dst1 = static_cast<E*>(destination[0]);                          \
    [[maybe_unused]] E* const dst2 = static_cast<E*>(destination[1]);                          \
    for (; times > 0; --times) {                                                               \
      for (int32_t i = 0; i < len; ++i) {                                                      \
        STEP;                                                                                  \
      }                                                                                        \
      asm volatile("" ::: "memory");                                                           \
    }                                                                                          \
  }

#define REAL_STEPS(F, single_step, double_step) \
  LOOP(F##_32f, float, single_step)             \
  LOOP(F##_64f, double, double_step)
#define REAL_NONE(F, name)
#define REAL_INVERSE(F, name) REAL_STEPS(F, dst1[i] = 1 / src1[i], dst1[i] = 1 / src1[i])
#define REAL_QUOTIENT(F, name) \
  REAL_STEPS(F, dst1[i] = src1[i] / src2[i], dst1[i] = src1[i] / src2[i])
#define REAL_UNARY(F, name) REAL_STEPS(F, dst1[i] = name##f(src1[i]), dst1[i] = name(src1[i]))
#define REAL_BINARY(F, name) \
  REAL_STEPS(F, dst1[i] = name##f(src1[i], src2[i]), dst1[i] = name(src1[i], src2[i]))
#define REAL_SCALAR_SECOND(F, name) \
  REAL_STEPS(F, dst1[i] = name##f(src1[i], src2[0]), dst1[i] = name(src1[i], src2[0]))
#define REAL_RECIPROCAL(F, name) \
  REAL_STEPS(F, dst1[i] = 1 / name##f(src1[i]), dst1[i] = 1 / name(src1[i]))
#define REAL_TWO_RESULTS(F, name) \
  REAL_STEPS(F, name##f(src1[i], dst1 + i, dst2 + i), name(src1[i], dst1 + i, dst2 + i))
#define REAL_FRACTION_RETURNED(F, name) \
  REAL_STEPS(F, dst2[i] = name##f(src1[i], dst1 + i), dst2[i] = name(src1[i], dst1 + i))

// C++ hides the C library's complex functions; __builtin_csqrt and so on call them.
#define COMPLEX_STEPS(F, single_step, double_step) \
  LOOP(F##_32fc, Complex32, single_step)           \
  LOOP(F##_64fc, Complex64, double_step)
#define COMPLEX_NONE(F, name)
#define COMPLEX_UNARY(F, name) \
  COMPLEX_STEPS(F, dst1[i] = __builtin_##name##f(src1[i]), dst1[i] = __builtin_##name(src1[i]))
#define COMPLEX_BINARY(F, name)                                     \
  COMPLEX_STEPS(F, dst1[i] = __builtin_##name##f(src1[i], src2[i]), \
                dst1[i] = __builtin_##name(src1[i], src2[i]))
#define COMPLEX_SCALAR_SECOND(F, name)                              \
  COMPLEX_STEPS(F, dst1[i] = __builtin_##name##f(src1[i], src2[0]), \
                dst1[i] = __builtin_##name(src1[i], src2[0]))

#define LUX_LIBM(F, kind, loop, name) kind##_##loop(F, name)
#include "core/functions.def"
#undef REAL_STEPS
#undef COMPLEX_STEPS
#undef REAL_NONE
#undef COMPLEX_NONE

constexpr PlainLoop kRows[] = {
#define REAL_STEPS(F, single_step, double_step) {#F, "32f", F##_32f}, {#F, "64f", F##_64f},
#define COMPLEX_STEPS(F, single_step, double_step) {#F, "32fc", F##_32fc}, {#F, "64fc", F##_64fc},
#define REAL_NONE(F, name) {#F, "32f", nullptr}, {#F, "64f", nullptr},
#define COMPLEX_NONE(F, name) {#F, "32fc", nullptr}, {#F, "64fc", nullptr},
#define LUX_LIBM(F, kind, loop, name) kind##_##loop(F, name)
#include "core/functions.def"
};

}  // namespace

const PlainLoops LUX_LOOPS = {kRows, kRows + sizeof kRows / sizeof kRows[0]};

}  // namespace bench
