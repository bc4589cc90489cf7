// SPDX-License-Identifier: MIT
//
// What every real kernel shares: argument checks, control words, the walk over blocks, screening,
// tail, reports and status. A kernel brings two steps:
//
//   fast(first, last)   computes whole blocks from element `first` on and returns the index of the
//                       first block that holds a special element, or `last`. It stores nothing of
//                       the block that it stops at.
//   one(i, status)      computes element i with every special case, and reports it.
//
// The elements of a special block go through `one` in order, and so do those of the tail. Where the
// wide library has a step of the same contract, with_wide_step() makes one `fast` of the two.
#ifndef LUX_KERNELS_FRAME_H
#define LUX_KERNELS_FRAME_H

#include "core/bits.h"
#include "core/control.h"
#include "core/shapes.h"
#include "core/wide_walk.h"

// Reports carry no name: each kernel passes its own empty text.
static const char _NOX_THISFUNC_NAME[1] = "";

static inline void call_error(const Arrays<float>& a, Status code, int32_t index,
                              const char* name) {
  noxsError(code, index, a.src1, a.src2, a.dst1, a.dst2, name);
}

static inline void call_error(const Arrays<double>& a, Status code, int32_t index,
                              const char* name) {
  noxdError(code, index, a.src1, a.src2, a.dst1, a.dst2, name);
}

// Reports an element whose result is stored already. The last code reported is the call's status.
template <class E>
__attribute__((noinline, cold)) static void _ErrorCall(const Arrays<E>& arrays, Status code,
                                                       int32_t index, Status* status) {
  call_error(arrays, code, index, _NOX_THISFUNC_NAME);
  *status = code;
}

// The control words that a kernel computes under.
struct SseNearest {
  uint32_t caller = sse_enter();
  uint32_t callers_sse() const { return caller; }
  void leave() const { sse_leave(caller); }
};

template <X87Precision kPrecision>
struct X87Nearest {
  uint16_t caller = x87_enter(kPrecision);
  uint16_t callers_x87() const { return caller; }
  void leave() const { x87_leave(caller, kPrecision); }
};

template <X87Precision kPrecision>
struct BothNearest {
  SseNearest sse;
  X87Nearest<kPrecision> x87;
  uint32_t callers_sse() const { return sse.caller; }
  uint16_t callers_x87() const { return x87.caller; }
  void leave() const {
    x87.leave();
    sse.leave();
  }
};

// What computes under them.
template <class Control>
constexpr Unit kUnitOf = Unit::kX87;
template <>
constexpr Unit kUnitOf<SseNearest> = Unit::kSse;
template <X87Precision kPrecision>
constexpr Unit kUnitOf<BothNearest<kPrecision>> = Unit::kBoth;

template <class Control, int32_t kBlock, class E, class Fast, class One>
static inline Status run_kernel(const Arrays<E>& arrays, int32_t len, Fast fast, One one) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!arrays.src1 || !arrays.src2 || !arrays.dst1 || !arrays.dst2) return LUX_NULL_POINTER;

  const Control control;
  auto walk = wide_walk(fast, control, arrays, len);
  Status status = LUX_OK;
  const int32_t whole = len - len % kBlock;
  int32_t i = 0;
  while (i < len) {
    if (i < whole) i = take_step(fast, &walk, arrays, i, whole);
    const int32_t end = i < whole ? i + kBlock : len;
    for (; i < end; ++i) one(i, &status);
  }
  control.leave();
  return status;
}

// Clobbers of a kernel block in assembly: the whole x87 stack, and memory.
#define LUX_X87_STACK "st", "st(1)", "st(2)", "st(3)", "st(4)", "st(5)", "st(6)", "st(7)", "memory"

// The kernels of one function: one computation under the name of each grade.
#define LUX_KERNEL(family, type, grade, shape)               \
  extern "C" Status _noxomp_luxs##family##_##type##_##grade( \
      LUX_PARAMS_##shape(LUX_ELEMENT_##type), int32_t len)

#define LUX_KERNEL_ALIAS(family, type, grade, shape, best) \
  LUX_KERNEL(family, type, grade, shape)                   \
  __attribute__((alias("_noxomp_luxs" #family "_" #type "_" #best)));

#define LUX_KERNELS_32F(family, shape, function)                                  \
  LUX_KERNEL(family, 32f, A24, shape) { return function(LUX_ARGS_##shape, len); } \
  LUX_KERNEL_ALIAS(family, 32f, A21, shape, A24)                                  \
  LUX_KERNEL_ALIAS(family, 32f, A11, shape, A24)

#define LUX_KERNELS_64F(family, shape, function)                                  \
  LUX_KERNEL(family, 64f, A53, shape) { return function(LUX_ARGS_##shape, len); } \
  LUX_KERNEL_ALIAS(family, 64f, A50, shape, A53)

#endif
