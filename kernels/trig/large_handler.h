// SPDX-License-Identifier: MIT
//
// What the handlers of both types share: infinities and NaNs, reports, the control word. Their
// files bring _dSin(x), _dCos(x), _dTan(x) and _dSinCos(x, cosine) of the finite element at x.
#ifndef LUX_KERNELS_TRIG_LARGE_HANDLER_H
#define LUX_KERNELS_TRIG_LARGE_HANDLER_H

#include "kernels/frame.h"
#include "kernels/trig/large_argument.h"
#include "kernels/trig/pi_32.h"

// Infinity or a NaN.
template <class E>
static inline bool is_special(const E* x) {
  return upper_magnitude(x) >= Upper<E>::kInf;
}

// Only the upper word is looked at: a NaN of a double with all of its payload in the lower passes
// for an infinity.
template <class E>
static inline bool is_infinite(const E* x) {
  return upper_magnitude(x) == Upper<E>::kInf;
}

static inline uint32_t nan_for(const float* x) {
  return is_infinite(x) ? Format<float>::kDefaultNaN : quieted<float>(load_bits(x));
}

static inline uint64_t nan_for(const double*) { return Format<double>::kDefaultNaN; }

template <class E>
__attribute__((noinline, cold)) static void special(int32_t i, const E* src, E* dst1, E* dst2,
                                                    int32_t* status, const char* name) {
  const bool reported = is_infinite(src + i);
  const auto nan = nan_for(src + i);
  store_bits(dst1 + i, nan);
  store_bits(dst2 + i, nan);
  if (!reported) return;
  call_error(Arrays<E>{src, src, dst1, dst2}, LUX_DOMAIN, i, name);
  *status = LUX_DOMAIN;
}

// The reduction of doubles from 2^17 on, and their functions, for the singles that need them.
Step large_step(const double& x);
double double_sine(const double& x);
double double_cosine(const double& x);
double double_tangent(const double& x);

// The functions are not inlined into their three handlers each.
#define LUX_SCALAR static __attribute__((noinline, regparm(3)))

template <class E, class Function>
static inline void one_result(Function function, int32_t i, const E* src, E* dst, int32_t* status,
                              const char* name) {
  if (is_special(src + i)) return special(i, src, dst, dst, status, name);
  const uint16_t control = x87_enter(X87_EXTENDED);
  in_memory(dst + i) = E(function(src + i));
  x87_leave(control, X87_EXTENDED);
}

template <class E, class Function>
static inline void two_results(Function function, int32_t i, const E* src, E* dst_sin, E* dst_cos,
                               int32_t* status, const char* name) {
  if (is_special(src + i)) return special(i, src, dst_sin, dst_cos, status, name);
  const uint16_t control = x87_enter(X87_EXTENDED);
  in_memory(dst_sin + i) = E(function(src + i, dst_cos + i));
  x87_leave(control, X87_EXTENDED);
}

#define LUX_HANDLER(letter, E, function, variant)                                               \
  void nox##letter##function##_SC_##variant(int32_t i, const E* src, E* dst, int32_t* status) { \
    one_result(_d##function, i, src, dst, status, #letter #function "_" #variant);              \
  }

#define LUX_HANDLERS(letter, E, variant)                                                 \
  LUX_HANDLER(letter, E, Sin, variant)                                                   \
  LUX_HANDLER(letter, E, Cos, variant)                                                   \
  LUX_HANDLER(letter, E, Tan, variant)                                                   \
  void nox##letter##SinCos_SC_##variant(int32_t i, const E* src, E* dst_sin, E* dst_cos, \
                                        int32_t* status) {                               \
    two_results(_dSinCos, i, src, dst_sin, dst_cos, status, #letter "SinCos_" #variant); \
  }

#endif
