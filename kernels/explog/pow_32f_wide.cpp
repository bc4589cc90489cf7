// SPDX-License-Identifier: MIT
#include "kernels/explog/pow_32f_step.h"
#include "kernels/wide_step.h"

// False, and nothing stored, if a power is not ordinary.
template <class Grade, bool kSigned>
static inline bool power_block(Singles x, Singles y, float* dst) {
  Singles sign;
  if (kSigned && !packed_signs(x, y, &sign)) return false;
  const Split t = packed_product<Grade>(x, y);
  if (!in_range(t.whole)) return false;
  const Singles result = power<Grade>(t);
  store_lanes(dst, kSigned ? either(result, sign) : result);
  return true;
}

// The steps of packed_blocks in kernels/explog/pow_32f.h; exponents(i) are those from element i on.
template <class Grade, class Exponents>
static inline int32_t powers(const Arrays<float>& arrays, int32_t i, int32_t last,
                             Exponents exponents) {
  constexpr uint32_t kNormal = Format<float>::kSmallestNormal, kInf = Format<float>::kInf;
  for (; i + kLanes <= last; i += kLanes) {
    const Singles x = load_lanes(arrays.src1 + i), y = exponents(i);
    if (!all_below(y, kLargeExponent)) break;
    if (__builtin_expect(all_within(x, kNormal, kInf), true)) {
      if (!power_block<Grade, false>(x, y, arrays.dst1 + i)) break;
    } else {
      if (!all_within(magnitude_of(x), kNormal, kInf)) break;
      if (!power_block<Grade, true>(x, y, arrays.dst1 + i)) break;
    }
  }
  return i;
}

// In all lanes, as if from memory each time: what is computed of it alone would be computed, and raise flags,
// before it is known that there is an ordinary block.
static inline Singles one_exponent(const float* y) {
  Singles lanes = all_lanes(*y);
  asm volatile("" : "+x"(lanes));
  return lanes;
}

#define POWERS(grade)                                                                              \
  LUX_WIDE_KERNEL(Pow, 32f, grade) {                                                               \
    return powers<grade>(arrays, first, last,                                                      \
                         [&](int32_t i) { return load_lanes(arrays.src2 + i); });                  \
  }                                                                                                \
  LUX_WIDE_KERNEL(Powx, 32f, grade) {                                                              \
    return powers<grade>(arrays, first, last, [&](int32_t) { return one_exponent(arrays.src2); }); \
  }
POWERS(A21)
POWERS(A11)
