// SPDX-License-Identifier: MIT
//
// erfc of single-precision arrays from a = |x| = k/32 + r, k = round(32 a), r exact; 2 - erfc(a)
// for negative x, where nothing cancels.
//
//   A24        erfc(a) = scale (1 + d1 r + ... + d7 r^7) by cell, on the x87 unit at 53-bit
//              precision; the sign chooses factor and constant of the last step
//   A21, A11   erfc(a) = c0 e^-w (1 + c1 r + c2 r^2 + c3 r^3) by cell, w = r (a + k/32): a^2 is
//              (k/32)^2 + w, |w| < 0.29. Packed; A11 without c2 and c3, the exponential of degree 5
//              or 3. Elements from 9.1875 on in magnitude, whose results may be subnormal, as under
//              A24
//   from 10.0541954 on   +0
//
// The polynomials of A24 are off by at most 2^-31.5 of the result, the 53-bit steps by 2^-49: 0.006
// ulp beside the last rounding.
//
// Worst errors (every input from -4.5 on): A24 0.5017 ulp, at 0x40FA7E81; A21
// 2^-21.77 of the result, at 0x40E282BB; A11 2^-11.99, at 0x3C7FFF7C.
#include "kernels/erf/erfc_32f_step.h"
#include "kernels/frame.h"
#include "kernels/screens.h"

constexpr uint32_t kUnderflow = 0x4120DDFC;  // 10.0541954: half the smallest subnormal

// By the sign.
struct Side {
  double factor, constant;
};
static const Side kSides[2] = {{1, 0}, {-1, 2}};

template <int kCount>
static inline void extended_block(const float* src, float* dst) {
  alignas(16) float x[4], r[4], shifted[4];
  const __m128 loaded = load_elements<kCount>(src);
  const Reduced reduced = reduce(magnitude_from_least(loaded));
  _mm_store_ps(x, loaded);
  _mm_store_ps(r, reduced.r);
  _mm_store_ps(shifted, reduced.shifted);
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i) {
    const Septic& c = kSeptic[cell_of(shifted + i)];
    const Side& side = kSides[load_bits(x + i) >> 31];
    const double s = (((c.s[0] * r[i] + c.s[1]) * r[i] + c.s[2]) * r[i] + c.s[3]) * r[i] + c.s[4];
    const double sum = (((s * r[i] + c.d2) * r[i] + c.d1) * r[i] + 1.0f) * c.scale;
    in_memory(dst + i) = float(sum * side.factor + side.constant);
  }
}

// Blocks below the bound; element(x, y): one below kUnderflow, both in magnitude.
template <uint32_t kBound, auto kStep, class Block, class Element>
static inline Status erfc_32f(const float* src, float* dst, int32_t len, Block block,
                              Element element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<BothNearest<X87_DOUBLE>, 4>(
      arrays, len,
      with_wide_step<Unit::kSse, kStep>(arrays, len,
                                        [=](int32_t i, int32_t last) {
                                          return blocks_below<4>(src, dst, kBound, i, last, block);
                                        }),
      [&](int32_t i, Status* status) {
        constexpr uint32_t kTwo = 0x40000000;
        const uint32_t x = load_bits(src + i), a = magnitude<float>(x);
        if (a < kUnderflow) {
          element(src + i, dst + i);
        } else if (a > Format<float>::kInf) {
          store_bits(dst + i, quieted<float>(x));
        } else if (x != a) {
          store_bits(dst + i, kTwo);
        } else {
          store_bits(dst + i, 0);
          if (a != Format<float>::kInf) _ErrorCall(arrays, LUX_UNDERFLOW, i, status);
        }
      });
}

template <int kTerms, const auto& kPower, auto kStep>
static inline Status packed_erfc(const float* src, float* dst, int32_t len) {
  return erfc_32f<kPackedBound, kStep>(
      src, dst, len, [](const float* x, float* y) { packed_block<kTerms, kPower, 4>(x, y); },
      [](const float* x, float* y) {
        if (magnitude<float>(load_bits(x)) < kPackedBound)
          packed_block<kTerms, kPower, 1>(x, y);
        else
          extended_block<1>(x, y);
      });
}

LUX_KERNEL(Erfc, 32f, A24, 1_1) {
  return erfc_32f<kUnderflow, nullptr>(
      src, dst, len, [](const float* x, float* y) { extended_block<4>(x, y); },
      [](const float* x, float* y) { extended_block<1>(x, y); });
}

LUX_KERNEL(Erfc, 32f, A21, 1_1) {
  return packed_erfc<4, kPower21, &WideLibrary::Erfc_32f_A21>(src, dst, len);
}
LUX_KERNEL(Erfc, 32f, A11, 1_1) {
  return packed_erfc<2, kPower11, &WideLibrary::Erfc_32f_A11>(src, dst, len);
}
