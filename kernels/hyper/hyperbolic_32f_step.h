// SPDX-License-Identifier: MIT
//
// The packed steps of hyperbolic sine and cosine in single precision; see
// kernels/hyper/hyperbolic_32f.h.
#ifndef LUX_KERNELS_HYPER_HYPERBOLIC_32F_STEP_H
#define LUX_KERNELS_HYPER_HYPERBOLIC_32F_STEP_H

#include "kernels/grid.h"
#include "kernels/lanes.h"
#include "kernels/hyper/generated/hyperbolic_32f_table.h"  // kSingleCell, kSingleHalves, kC2, kS3OverC2

constexpr uint32_t kOverflow = 0x42B2D4FD;  // 89.41599: both functions round to infinity

enum Function { kCosh, kSinh };

// a = |x|
struct Reduced {
  OnGrid at;
  Singles r;
};

static inline Singles from_least(Singles a) { return larger(a, all_lanes(0x1p-20f)); }

static inline Reduced reduce(Singles a) {
  const OnGrid at = to_grid<32>(a);
  return {at, a - at.multiple};
}

enum Grade { kA21, kA11 };

struct Entries {
  Singles leading, other;
};

template <Function kFunction, int kCount>
static inline Entries entries_of(Singles shifted) {
  alignas(Singles) float word[kLanes];
  lay_out(word, shifted);
  const auto pair = [&](int lane) {
    return reinterpret_cast<const float*>(kSingleHalves + Grid<32>::index(word + lane % kCount));
  };
  const PairLanes halves = turned_pairs(pair);
  const Singles cosh = halves.first, sinh = halves.second;
  return kFunction == kCosh ? Entries{cosh, sinh} : Entries{sinh, cosh};
}

template <Function kFunction, Grade kGrade, int kCount>
static inline void packed_block(const float* src, float* dst) {
  const Singles x = load_elements<kCount>(src), a = magnitude_of(x);
  const Reduced reduced = reduce(from_least(a));
  const Entries entries = entries_of<kFunction, kCount>(reduced.at.shifted);
  Singles r = reduced.r, rest;
  if (kGrade == kA21) {
    const Singles z = r * r * all_lanes(kC2);
    r = r + r * (z * all_lanes(kS3OverC2));
    rest = entries.leading * z + entries.other * r;
  } else {
    rest = entries.other * r;
  }
  const Singles half = entries.leading + rest, y = half + half;
  if (kFunction == kCosh) {
    store_elements<kCount>(dst, y);
  } else {
    // Small arguments pass, so that nothing depends on how the processor treats subnormals.
    const Singles passes = is_less(a, all_lanes(0x1p-12f));
    store_elements<kCount>(dst, either(select(passes, a, y), sign_of(x)));
  }
}

#endif
