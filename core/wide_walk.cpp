// SPDX-License-Identifier: MIT
#include "core/wide_walk.h"

constexpr uint16_t kInexact = 0x20;  // on both units

template <>
bool inexact_is_raised<Unit::kX87>() {
  return x87_status() & kInexact;
}

template <>
bool inexact_is_raised<Unit::kBoth>() {
  return inexact_is_raised<Unit::kX87>() && (sse_control() & kInexact);
}

// The flag of an inexact result is the one that nearly every step raises, and needs no more than an
// operation.
static void raise_on_x87(uint32_t flags) {
  const uint16_t missing = uint16_t(flags) & ~x87_status();
  if (missing & kInexact) asm volatile("fld1\n\tfldpi\n\tfdivrp\n\tfstp %%st" : : : "st", "st(1)");
  if (missing & ~kInexact) x87_raise(missing & ~kInexact);
}

template <Unit kUnit, class E>
int32_t take_wide_step(WideStep<E> step, const Arrays<E>& arrays, int32_t i, int32_t last) {
  uint32_t flags = 0;
  if constexpr (kUnit == Unit::kX87) {
    const uint32_t caller = sse_control();
    sse_load(kSseMasked);
    i = step(arrays, i, last, &flags);
    flags = sse_control() & kSseFlags;
    sse_load(caller);
  } else {
    i = step(arrays, i, last, &flags);
  }
  if (kUnit != Unit::kSse && flags) raise_on_x87(flags);
  return i;
}

template int32_t take_wide_step<Unit::kSse>(WideStep<float>, const Arrays<float>&, int32_t,
                                            int32_t);
template int32_t take_wide_step<Unit::kBoth>(WideStep<float>, const Arrays<float>&, int32_t,
                                             int32_t);
template int32_t take_wide_step<Unit::kX87>(WideStep<float>, const Arrays<float>&, int32_t,
                                            int32_t);
template int32_t take_wide_step<Unit::kX87>(WideStep<double>, const Arrays<double>&, int32_t,
                                            int32_t);
