// SPDX-License-Identifier: MIT
//
// The packed steps of the inverse hyperbolic functions in single precision; see
// kernels/hyper/log1p_32f.h.
#ifndef LUX_KERNELS_HYPER_LOG1P_32F_STEP_H
#define LUX_KERNELS_HYPER_LOG1P_32F_STEP_H

#include "kernels/lanes.h"
#include "kernels/hyper/generated/log1p_32f_table.h"  // kCubic, kExponent, kLn2, kLong, kShort

constexpr uint32_t kLarge = 0x5E800000;  // 2^62

// A family's ordinary arguments, see kernels/hyper/log1p_domain.h, kScale, and s of a magnitude.
struct PackedAcosh {
  static constexpr uint32_t kFirst = Format<float>::kOne, kBeyond = kLarge, kSigned = 0;
  static constexpr float kScale = 1;

  static Singles argument(Singles x) {
    const Singles one = all_lanes(1.0f), d = x - one;
    return square_root((x + one) * d) + d;
  }
};

struct PackedAsinh {
  static constexpr uint32_t kBeyond = kLarge, kSigned = kSignUpper;
  static constexpr float kScale = 1;

  static Singles argument(Singles a) {
    const Singles one = all_lanes(1.0f), square = a * a;
    const Singles root = square_root(square + one);
    return square / (root + one) + a;
  }
};

struct PackedAtanh {
  static constexpr uint32_t kBeyond = Format<float>::kOne, kSigned = kSignUpper;
  static constexpr float kScale = 0.5f;

  static Singles argument(Singles a) { return (a + a) / (1.0f - a); }
};

template <const auto& kP>
static inline Singles packed_log1p(Singles s) {
  const Singles one = all_lanes(1.0f), raised = all_lanes(0x1.6a09e6p+0f);  // sqrt(2)
  const Singles power = both((s + one) * raised, all_lanes(Format<float>::kInf));
  const Singles t = (s + (one - power)) / (s + (one + power));
  const Singles square = t * t;
  const Singles e = pattern_numbers(power) - all_lanes(127 * 0x1p23f);
  return t + t + t * square * polynomial<kP>(square) + e * all_lanes(float(kLn2 * 0x1p-23));
}

template <class Family, const auto& kP, int kCount>
static inline void packed_block(const float* src, float* dst) {
  const Singles x = load_elements<kCount>(src), sign = both(x, all_lanes(Family::kSigned)),
                a = differing(x, sign);
  // Those that pass are computed too, as 2^-20: their squares are subnormal.
  const Singles used = Family::kSigned ? larger(a, all_lanes(0x1p-20f)) : a;
  Singles y = packed_log1p<kP>(Family::argument(used));
  if (Family::kScale != 1) y = y * all_lanes(Family::kScale);
  if (Family::kSigned) y = either(select(is_less(a, all_lanes(0x1p-12f)), a, y), sign);
  store_elements<kCount>(dst, y);
}

#endif
