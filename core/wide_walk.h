// SPDX-License-Identifier: MIT
//
// The walk of a kernel over its blocks where there is a wide step for it: the wide step goes as far as
// it can, the kernel's own step takes the block that it stops at.
#ifndef LUX_CORE_WIDE_WALK_H
#define LUX_CORE_WIDE_WALK_H

#include "core/wide.h"

// The library that was found, or one that is not enabled.
const WideLibrary& wide_library();

// The unit in which a kernel's own step computes, and raises flags.
enum class Unit { kSse, kX87, kBoth };

// Whether a wide step may do a kernel's work under the caller's control words: an exception that the
// caller has unmasked is to trap where the kernel's own step traps, and on that unit.
template <Unit kUnit>
bool wide_fits_control();

// Whether the flag of an inexact result is raised on the unit, or on both.
template <Unit kUnit>
bool inexact_is_raised();

// Takes the step from element i on. Where its kernel uses the SSE unit, under the control word that the
// kernel has set, so that flags are raised as the kernel raises them. Otherwise under one of its own, and
// its flags go to the x87 unit.
template <Unit kUnit, class E>
int32_t take_wide_step(WideStep<E> step, const Arrays<E>& arrays, int32_t i, int32_t last);

// Takes the place of a kernel's `fast`. kStep is a member of the library's. kOnceInexact: its method is
// another than the kernel's, and so are the exact ones of its operations. Since nothing but an inexact
// result is raised by either, the kernel's own step goes first until that has been.
template <Unit kUnit, auto kStep, bool kOnceInexact, class E, class Fast>
class WideWalk {
 public:
  WideWalk(const Arrays<E>& arrays, int32_t len, Fast fast) : arrays_(arrays), fast_(fast) {
    if (len < kLeastWideBlock) return;
    const WideLibrary& library = wide_library();
    if (__atomic_load_n(&library.head.enabled, __ATOMIC_RELAXED)) step_ = library.*kStep;
  }

  int32_t operator()(int32_t i, int32_t last) {
    for (;;) {
      int32_t end = last;
      if (step_) i = widely(i, last, &end);
      i = fast_(i, end);
      if (i < end || end == last) return i;
    }
  }

 private:
  // Where the wide step gets nowhere, the kernel's own is left alone for twice as long each time.
  __attribute__((noinline)) int32_t widely(int32_t first, int32_t last, int32_t* end) {
    if (stretch_ == 0) {
      stretch_ = kLeastStretch;
      if (!wide_fits_control<kUnit>()) step_ = nullptr;
      if (!step_) return first;
    }
    int32_t i = first;
    if (i >= next_ && last - i >= kLeastWideBlock) {
      if (!kOnceInexact || inexact_is_raised<kUnit>())
        i = take_wide_step<kUnit>(step_, arrays_, i, last);
      stretch_ = i > first ? kLeastStretch : stretch_ < kLongest ? 2 * stretch_ : stretch_;
      next_ = i + stretch_;
    }
    if (i < next_ && next_ < last) *end = next_;
    return i;
  }

  // A wide block has at most sixteen elements, and a kernel's own block divides it.
  static constexpr int32_t kLeastStretch = 16, kLongest = 1 << 20;

  const Arrays<E>& arrays_;
  Fast fast_;
  WideStep<E> step_ = nullptr;
  int32_t stretch_ = 0, next_ = 0;
};

// The kernel's `fast` itself where there is no step.
template <Unit kUnit, auto kStep, bool kOnceInexact = false, class E, class Fast>
static inline auto with_wide_step(const Arrays<E>& arrays, int32_t len, Fast fast) {
  if constexpr (__is_same(decltype(kStep), decltype(nullptr)))
    return fast;
  else
    return WideWalk<kUnit, kStep, kOnceInexact, E, Fast>(arrays, len, fast);
}

#endif
