// SPDX-License-Identifier: MIT
//
// Passes over blocks of elements: one step of the method for all of a block before the next step.
// One element after the other is a chain of some hundred instructions, too long for the processor to
// see the next element's beside it; the steps of different elements do not wait for one another.
//
// What a step leaves for the next has 64 bits. It is kept as two doubles, whose sum is exact: loads
// of extended numbers cost up to twelve cycles.
#ifndef LUX_COMPLEX_PASSES_H
#define LUX_COMPLEX_PASSES_H

#include "complex/frame.h"

constexpr int32_t kPass = 16;

// A 64-bit number no smaller than 2^-950, or a double.
struct SplitNumber {
  double high, low;

  void put(long double x) {
    ::put_copy(&high, x);
    ::put(&low, x - high);
  }
  long double sum() const { return load_extended(&high) + low; }
};

static inline void copy_bits(DoubleInMemory* to, const DoubleInMemory& from) {
  store_words(to, load_words(&from));
}

static inline void copy_bits(Complex64* to, const Complex64& from) {
  copy_bits(&to->re, from.re);
  copy_bits(&to->im, from.im);
}

// A block with special elements: those apart, before anything is stored, the others in passes, as
// if the special ones were 1 + i.
template <class Steps>
__attribute__((noinline, cold)) static void mixed_passes(const Complex64* from, Complex64* to,
                                                         int32_t count) {
  Complex64 apart[kPass], ordinary[kPass];
  uint32_t special = 0;
  for (int32_t k = 0; k < count; ++k) {
    if (!Steps::is_ordinary(from[k])) {
      special |= 1u << k;
      const Complex64 z = Steps::element(from[k]);
      copy_bits(&apart[k], z);
      ordinary[k] = {1, 1};
    } else {
      copy_bits(&ordinary[k], from[k]);
    }
  }
  if (special + 1 != 1u << count) Steps::passes(ordinary, to, count);
  for (int32_t k = 0; k < count; ++k)
    if (special >> k & 1) copy_bits(&to[k], apart[k]);
}

static inline void widen(const Complex32& from, Complex64* to) {
  put(&to->re, from.re);
  put(&to->im, from.im);
}

// Steps::is_ordinary tells, without branches, which elements `passes` takes; `element` takes the
// others, and all where there are no more than Steps::kFew: they do not wait for one another long.
template <class Steps>
__attribute__((always_inline)) static inline void block_passes(const Complex64* from, Complex64* to,
                                                               int32_t count) {
  if (__builtin_expect(count <= Steps::kFew, false)) {
    for (int32_t k = 0; k < count; ++k) to[k] = Steps::element(from[k]);
    return;
  }
  bool ordinary = true;
  for (int32_t k = 0; k < count; ++k) ordinary &= Steps::is_ordinary(from[k]);
  if (__builtin_expect(ordinary, true))
    Steps::passes(from, to, count);
  else
    mixed_passes<Steps>(from, to, count);
}

template <class Steps>
static inline Status run_passes(const Lux64fc* src, Lux64fc* dst, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !dst) return LUX_NULL_POINTER;
  const X87Nearest<X87_EXTENDED> control;
  for (int32_t i = 0, count; i < len; i += count) {
    count = len - i < kPass ? len - i : kPass;
    block_passes<Steps>(&in_memory(src + i), &in_memory(dst + i), count);
  }
  control.leave();
  return LUX_OK;
}

template <class Steps>
static inline Status run_passes(const Lux32fc* src, Lux32fc* dst, int32_t len) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !dst) return LUX_NULL_POINTER;
  const X87Nearest<X87_EXTENDED> control;
  for (int32_t i = 0, count; i < len; i += count) {
    count = len - i < kPass ? len - i : kPass;
    alignas(16) Complex64 block[kPass];
    for (int32_t k = 0; k < count; ++k) widen(in_memory(src + i + k), &block[k]);
    block_passes<Steps>(block, block, count);
    for (int32_t k = 0; k < count; ++k) in_memory(dst + i + k) = narrowed(block[k]);
  }
  control.leave();
  return LUX_OK;
}

// One element after the other.
template <Complex64 (*kElement)(const Complex64&)>
struct ElementSteps {
  static constexpr int32_t kFew = 0;
  static bool is_ordinary(const Complex64&) { return true; }
  static constexpr auto element = kElement;
  static void passes(const Complex64* from, Complex64* to, int32_t count) {
    for (int32_t k = 0; k < count; ++k) to[k] = kElement(from[k]);
  }
};

// A family brings kFew, is_ordinary, element and passes.
#define LUX_COMPLEX_PASSES(family, steps)                                         \
  LUX_KERNEL(family, 64fc, A53, 1_1) { return run_passes<steps>(src, dst, len); } \
  LUX_KERNEL_ALIAS(family, 64fc, A50, 1_1, A53)                                   \
  LUX_KERNEL(family, 32fc, A24, 1_1) { return run_passes<steps>(src, dst, len); }

#endif
