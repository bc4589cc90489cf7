// SPDX-License-Identifier: MIT
//
// The packed steps of powers in single precision; see kernels/explog/pow_32f.h.
#ifndef LUX_KERNELS_EXPLOG_POW_32F_STEP_H
#define LUX_KERNELS_EXPLOG_POW_32F_STEP_H

#include "kernels/grid.h"
#include "kernels/lanes.h"
#include "kernels/explog/generated/pow_32f_table.h"  // static_const_table

constexpr uint32_t kLargeExponent = 0x4F000000;  // 2^31

// The lowest power first.
template <int kTerms>
static inline Singles rising_polynomial(const float (&c)[kTerms], Singles x) {
  Singles sum = all_lanes(c[kTerms - 1]);
#pragma GCC unroll 8
  for (int i = kTerms - 2; i >= 0; --i) sum = sum * x + c[i];
  return sum;
}

// 2^k of integers from -126 to 127: k is put into the exponent field as an integer.
static inline Singles powers_of_two(Singles k) {
  return numbers_as_patterns(k * 0x1p23f + 0x1.fcp29f);  // 127 2^23
}

// x = 2^e (z + 1), sqrt(1/2) <= z + 1 < sqrt(2)
struct Base {
  Singles e, z;
};

static inline Base reduce(Singles x) {
  const Singles field = pattern_numbers(both(x, all_lanes(Format<float>::kInf)));
  const Singles m = significand_of(x), above = is_less(all_lanes(0x1.6a09e6p+0f), m);
  const Singles bias = 127.0f - both(above, all_lanes(1.0f));
  return {field * 0x1p-23f - bias, m - both(above, m * 0.5f) - 1.0f};
}

// 2^(k + r)
struct Split {
  Singles k, r, whole;  // `whole` to be tested against the range
};

struct A21 {
  static Singles fraction_power(Singles r) { return rising_polynomial(kLongExp, r); }

  static Split product(const Base& x, Singles y) {
    const auto [e, z] = x;
    const Singles inverse = 1.0f / (z + 2.0f);
    const Singles s_high = leading_half(z * inverse), z_high = leading_half(z);
    const Singles remainder = ((z - (s_high + s_high)) - s_high * z_high) - s_high * (z - z_high);
    const Singles s_low = remainder * inverse, s = s_high + s_low, s2 = s * s;
    const Singles tail = s_low * kLogHigh + s * (s2 * rising_polynomial(kLogTail, s2) + kLogLow);
    const Singles head = s_high * kLogHigh, sum = e + head;
    const Singles lost = head - (sum - e);
    const Singles l_high = leading_half(sum), l_low = (sum - l_high) + (lost + tail);
    const Singles y_high = leading_half(y);
    const Singles t_high = y_high * l_high;
    const Singles t_low = (y - y_high) * l_high + y * l_low;
    const Singles t = t_high + t_low, k = to_grid<1>(t).multiple;
    return {k, (t_high - k) + t_low, t};
  }
};

struct A11 {
  static Singles fraction_power(Singles r) { return rising_polynomial(kShortExp, r); }

  static Split product(const Base& x, Singles y) {
    const auto [e, z] = x;
    const Singles s = z / (z + 2.0f);
    const Singles t = y * (e + s * rising_polynomial(kShortLog, s * s));
    const Singles k = to_grid<1>(t).multiple;
    return {k, t - k, t};
  }
};

static inline bool in_range(Singles t) {
  return in_all_lanes(is_less(magnitude_of(t), all_lanes(125.0f)));
}

template <class Grade>
static inline Singles power(const Split& t) {
  const Singles fraction = Grade::fraction_power(t.r) * t.r + 1.0f;
  return fraction * powers_of_two(t.k);
}

// Below 2^-40 the power is 1 as it is with 0; the products would be subnormal.
static inline Singles zero_if_tiny(Singles y) {
  return both(y, is_less(all_lanes(0x1p-40f), magnitude_of(y)));
}

// The signs of the powers; false where one of a negative base may have no real value. Exponents
// from 2^22 on pass for not whole. A caller's denormals-are-zero makes no subnormal one whole: below
// 1 it takes a fraction of zeros.
static inline bool packed_signs(Singles x, Singles y, Singles* sign) {
  const Singles one = all_lanes(1.0f), a = magnitude_of(y);
  const Singles seen = zero_if_tiny(y), half = seen * 0.5f;
  const Singles sized = both(is_less(a, all_lanes(0x1p+22f)),
                             either(is_at_most(one, a), is_equal(significand_of(y), one)));
  const Singles whole = both(is_equal(to_grid<1>(seen).multiple, y), sized);
  *sign = sign_of(both(x, is_unequal(to_grid<1>(half).multiple, half)));
  return !in_any_lane(without(whole, x));
}

template <class Grade>
static inline Split packed_product(Singles x, Singles y) {
  return Grade::product(reduce(x), zero_if_tiny(y));
}

#endif
