// SPDX-License-Identifier: MIT
//
// What a program does without the library: a loop over the C library's scalar function. A family
// without such a function has no row.
#include "bench/measure.h"

#include <math.h>
#include <stdlib.h>
#include <unistd.h>

namespace bench {
namespace {

using Complex32 = _Complex float;
using Complex64 = _Complex double;

// One body for every shape: STEP(i) computes element i.
#define LOOP(name, E, STEP)                                                         \
  void name(const Arrays& arrays, int32_t len, int32_t times) {                     \
    [[maybe_unused]] const E* const src1 = static_cast<const E*>(arrays.source[0]); \
    [[maybe_unused]] const E* const src2 = static_cast<const E*>(arrays.source[1]); \
    [[maybe_unused]] E* const dst1 = static_cast<E*>(arrays.destination[0]);        \
    [[maybe_unused]] E* const dst2 = static_cast<E*>(arrays.destination[1]);        \
    for (; times > 0; --times) {                                                    \
      for (int32_t i = 0; i < len; ++i) {                                           \
        STEP;                                                                       \
      }                                                                             \
      asm volatile("" ::: "memory");                                                \
    }                                                                               \
  }

// C++ hides the C library's complex functions; __builtin_csqrt and so on call them.
#define LIBM_FUNCTIONS                                                                     \
  UNARY(Sqrt, sqrt)                                                                        \
  UNARY(Cbrt, cbrt)                                                                        \
  STEPS(InvCbrt, dst1[i] = 1 / cbrtf(src1[i]), dst1[i] = 1 / cbrt(src1[i]))                \
  BINARY(Pow, pow)                                                                         \
  STEPS(Powx, dst1[i] = powf(src1[i], src2[0]), dst1[i] = pow(src1[i], src2[0]))           \
  UNARY(Exp, exp)                                                                          \
  UNARY(Ln, log)                                                                           \
  UNARY(Log10, log10)                                                                      \
  UNARY(Cos, cos)                                                                          \
  UNARY(Sin, sin)                                                                          \
  STEPS(SinCos, sincosf(src1[i], dst1 + i, dst2 + i), sincos(src1[i], dst1 + i, dst2 + i)) \
  UNARY(Tan, tan)                                                                          \
  UNARY(Acos, acos)                                                                        \
  UNARY(Asin, asin)                                                                        \
  UNARY(Atan, atan)                                                                        \
  BINARY(Atan2, atan2)                                                                     \
  UNARY(Cosh, cosh)                                                                        \
  UNARY(Sinh, sinh)                                                                        \
  UNARY(Tanh, tanh)                                                                        \
  UNARY(Acosh, acosh)                                                                      \
  UNARY(Asinh, asinh)                                                                      \
  UNARY(Atanh, atanh)                                                                      \
  UNARY(Erf, erf)                                                                          \
  UNARY(Erfc, erfc)                                                                        \
  BINARY(Hypot, hypot)                                                                     \
  UNARY(Floor, floor)                                                                      \
  UNARY(Ceil, ceil)                                                                        \
  UNARY(Trunc, trunc)                                                                      \
  UNARY(Round, round)                                                                      \
  UNARY(NearbyInt, nearbyint)                                                              \
  UNARY(Rint, rint)                                                                        \
  STEPS(Modf, dst2[i] = modff(src1[i], dst1 + i), dst2[i] = modf(src1[i], dst1 + i))       \
  COMPLEX(Sqrt, __builtin_csqrt)                                                           \
  COMPLEX_STEPS(Pow, dst1[i] = __builtin_cpowf(src1[i], src2[i]),                          \
                dst1[i] = __builtin_cpow(src1[i], src2[i]))                                \
  COMPLEX_STEPS(Powx, dst1[i] = __builtin_cpowf(src1[i], src2[0]),                         \
                dst1[i] = __builtin_cpow(src1[i], src2[0]))                                \
  COMPLEX(Exp, __builtin_cexp)                                                             \
  COMPLEX(Ln, __builtin_clog)                                                              \
  COMPLEX(Log10, __builtin_clog10)                                                         \
  COMPLEX(Cos, __builtin_ccos)                                                             \
  COMPLEX(Sin, __builtin_csin)                                                             \
  COMPLEX(Tan, __builtin_ctan)                                                             \
  COMPLEX(Acos, __builtin_cacos)                                                           \
  COMPLEX(Asin, __builtin_casin)                                                           \
  COMPLEX(Atan, __builtin_catan)                                                           \
  COMPLEX(Cosh, __builtin_ccosh)                                                           \
  COMPLEX(Sinh, __builtin_csinh)                                                           \
  COMPLEX(Tanh, __builtin_ctanh)                                                           \
  COMPLEX(Acosh, __builtin_cacosh)                                                         \
  COMPLEX(Asinh, __builtin_casinh)                                                         \
  COMPLEX(Atanh, __builtin_catanh)

#define UNARY(F, name) STEPS(F, dst1[i] = name##f(src1[i]), dst1[i] = name(src1[i]))
#define BINARY(F, name) \
  STEPS(F, dst1[i] = name##f(src1[i], src2[i]), dst1[i] = name(src1[i], src2[i]))
#define COMPLEX(F, name) COMPLEX_STEPS(F, dst1[i] = name##f(src1[i]), dst1[i] = name(src1[i]))

#define STEPS(F, single_step, double_step) \
  LOOP(F##_32f, float, single_step)        \
  LOOP(F##_64f, double, double_step)
#define COMPLEX_STEPS(F, single_step, double_step) \
  LOOP(F##_32fc, Complex32, single_step)           \
  LOOP(F##_64fc, Complex64, double_step)
LIBM_FUNCTIONS
#undef STEPS
#undef COMPLEX_STEPS

struct Row {
  std::string_view family, type;
  Loop loop;
};

constexpr Row kRows[] = {
#define STEPS(F, single_step, double_step) {#F, "32f", F##_32f}, {#F, "64f", F##_64f},
#define COMPLEX_STEPS(F, single_step, double_step) {#F, "32fc", F##_32fc}, {#F, "64fc", F##_64fc},
    LIBM_FUNCTIONS};

}  // namespace

Loop find_libm_loop(const Function& function) {
  for (const Row& row : kRows)
    if (function.is(row.family, row.type)) return row.loop;
  return nullptr;
}

void leave_out_sse2_variants(char** argv) {
  if (getenv("GLIBC_TUNABLES")) return;
  setenv("GLIBC_TUNABLES", "glibc.cpu.hwcaps=-SSE2", 1);
  execv("/proc/self/exe", argv);
}

}  // namespace bench
