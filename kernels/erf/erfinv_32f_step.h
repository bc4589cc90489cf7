// SPDX-License-Identifier: MIT
//
// The packed step of the inverse error function in single precision; see kernels/erf/erfinv_32f.cpp.
#ifndef LUX_KERNELS_ERF_ERFINV_32F_STEP_H
#define LUX_KERNELS_ERF_ERFINV_32F_STEP_H

#include "kernels/lanes.h"
#include "kernels/erf/generated/erfinv_32f_table.h"  // kQuintic, kCubic, kLinear

constexpr uint32_t kOne = Format<float>::kOne;
constexpr int kCellShift = Format<float>::kFractionBits - kCellBits;
constexpr uint32_t kHalfCell = 1u << (kCellShift - 1);
constexpr uint32_t kFirstCell = uint32_t(kFirstBinade + Format<float>::kBias) << kCellBits;

constexpr float kCentral = 0.5f - 0x1p-7f;  // lower end, in w, of the cell around 1/2

struct Reduced {
  Singles u, w;
};

static inline Reduced reduce(Singles x) {
  const Singles a = magnitude_of(x), w = 1.0f - a;
  return {select(is_at_most(all_lanes(kCentral), w), a, w), w};
}

static inline uint32_t cell_of(const float* w) {
  return ((load_bits(w) + kHalfCell) >> kCellShift) - kFirstCell;
}

// The coefficients of the cells, turned so that each lane holds those of its element.
static inline Singles cubic(const float* w, Singles u) {
  const auto [c3, c2, c1, c0] = turned_rows([=](int lane) { return kCubic[cell_of(w + lane)]; });
  // Below 2^-40 that is c1, and smaller products would be subnormal.
  const Singles v = larger(u, all_lanes(0x1p-40f));
  const Singles quadratic = (c3 * v + c2) * v + c1;
  return quadratic * u + c0;
}

static inline Singles linear(const float* w, Singles u) {
  const PairLanes c = turned_pairs([=](int lane) { return kLinear[cell_of(w + lane)]; });
  return c.first * u + c.second;
}

template <auto kPolynomial, int kCount>
static inline void packed_block(const float* src, float* dst) {
  alignas(Singles) float w[kLanes];
  const Singles x = load_elements<kCount>(src);
  const Reduced r = reduce(x);
  lay_out(w, r.w);
  store_elements<kCount>(dst, either(kPolynomial(w, r.u), sign_of(x)));
}

// From here on results are normal and smaller products add nothing to them, so that in the packed
// grades nothing depends on how the processor treats subnormal operands.
constexpr uint32_t kLeast = 0x01000000;  // 2^-125

#endif
