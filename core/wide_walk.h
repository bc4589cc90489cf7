// SPDX-License-Identifier: MIT
//
// The walk of a kernel over its blocks where there is a wide step for it: the wide step goes as far
// as it can, the kernel's own step takes the block that it stops at.
#ifndef LUX_CORE_WIDE_WALK_H
#define LUX_CORE_WIDE_WALK_H

#include "core/control.h"
#include "core/wide.h"

// The library that was found, or one that takes no call.
const WideLibrary& wide_library();

// The unit in which a kernel's own step computes, and raises flags.
enum class Unit { kSse, kX87, kBoth };

// Whether a wide step may do a kernel's work under the caller's control words: an exception that the
// caller has unmasked is to trap where the kernel's own step traps, and on that unit.
constexpr uint32_t kSseMasked = 0x1F80, kDenormalsAreZero = 0x40;

template <Unit kUnit, class Control>
static inline bool wide_fits(const Control& control) {
  bool fits = true;
  if constexpr (kUnit != Unit::kX87) fits = (control.callers_sse() & kSseMasked) == kSseMasked;
  if constexpr (kUnit != Unit::kSse) fits &= (control.callers_x87() & kX87Flags) == kX87Flags;
  // Doubles that take the place of the x87 unit must see a subnormal single as it is.
  if constexpr (kUnit == Unit::kBoth) fits &= !(control.callers_sse() & kDenormalsAreZero);
  return fits;
}

// Whether the flag of an inexact result is raised on the unit, or on both.
template <Unit kUnit>
bool inexact_is_raised();

// Takes the step from element i on. Where its kernel uses the SSE unit, under the control word that
// the kernel has set, so that flags are raised as the kernel raises them. Otherwise under one of
// its own, and its flags go to the x87 unit.
template <Unit kUnit, class E>
int32_t take_wide_step(WideStep<E> step, const Arrays<E>& arrays, int32_t i, int32_t last);

// A kernel's `fast` and the wide step that goes before it. It stands for itself: what changes
// during the walk is kept apart, where the compiler need not expect changes of what the step refers
// to.
//
// kOnceInexact: the step's method is another than the kernel's, and so are the exact ones among its
// operations. Since neither raises anything but the flag of an inexact result, the kernel's own
// step goes first until that has been.
template <Unit kUnit, auto kStep, bool kOnceInexact, class Fast>
struct WithWideStep {
  const Fast& fast;
};

// kStep is a member of the library's, or null where there is none.
template <Unit kUnit, auto kStep, bool kOnceInexact = false, class E, class Fast>
static inline auto with_wide_step(const Arrays<E>&, int32_t, const Fast& fast) {
  return WithWideStep<kUnit, kStep, kOnceInexact, Fast>{fast};
}

constexpr int32_t kLeastStretch = 16;

template <class E>
struct WideWalk {
  WideStep<E> step = nullptr;
  int32_t stretch = kLeastStretch, next = 0;
};

// Of a step alone.
struct NoWalk {};
template <class Fast, class Control, class E>
static inline NoWalk wide_walk(const Fast&, const Control&, const Arrays<E>&, int32_t) {
  return {};
}

template <Unit kUnit, auto kStep, bool kOnceInexact, class Fast, class Control, class E>
static inline auto wide_walk(const WithWideStep<kUnit, kStep, kOnceInexact, Fast>&,
                             const Control& control, const Arrays<E>&, int32_t len) {
  if constexpr (__is_same(decltype(kStep), decltype(nullptr))) {
    return NoWalk();
  } else {
    WideWalk<E> walk;
    const WideLibrary& library = wide_library();
    if (library.takes(len) && wide_fits<kUnit>(control)) walk.step = library.*kStep;
    return walk;
  }
}

// Where the wide step gets nowhere, the kernel's own is left alone for twice as long each time. A
// wide block has at most sixteen elements, and a kernel's own block divides it.
template <Unit kUnit, bool kOnceInexact, class E>
__attribute__((noinline)) static int32_t step_widely(WideWalk<E>* walk, const Arrays<E>& arrays,
                                                     int32_t first, int32_t last, int32_t* end) {
  constexpr int32_t kLongest = 1 << 20;
  int32_t i = first;
  if (i >= walk->next && last - i >= kLeastWideBlock) {
    if (!kOnceInexact || inexact_is_raised<kUnit>())
      i = take_wide_step<kUnit>(walk->step, arrays, i, last);
    if (i > first)
      walk->stretch = kLeastStretch;
    else if (walk->stretch < kLongest)
      walk->stretch *= 2;
    walk->next = i + walk->stretch;
  }
  if (i < walk->next && walk->next < last) *end = walk->next;
  return i;
}

template <class Fast>
static inline const Fast& own_step(const Fast& fast) {
  return fast;
}
template <Unit kUnit, auto kStep, bool kOnceInexact, class Fast>
static inline const Fast& own_step(const WithWideStep<kUnit, kStep, kOnceInexact, Fast>& both) {
  return both.fast;
}

// From element i on up to the first block that holds a special element.
template <class Fast, class E>
static inline int32_t take_step(const Fast& fast, NoWalk*, const Arrays<E>&, int32_t i,
                                int32_t last) {
  return own_step(fast)(i, last);
}

template <Unit kUnit, auto kStep, bool kOnceInexact, class Fast, class E>
static inline int32_t take_step(const WithWideStep<kUnit, kStep, kOnceInexact, Fast>& both,
                                WideWalk<E>* walk, const Arrays<E>& arrays, int32_t i,
                                int32_t last) {
  for (;;) {
    int32_t end = last;
    if (walk->step) {
      const Arrays<E> copy = arrays;  // the kernel's own may stay in registers
      i = step_widely<kUnit, kOnceInexact>(walk, copy, i, last, &end);
    }
    i = both.fast(i, end);
    if (i < end || end == last) return i;
  }
}

#endif
