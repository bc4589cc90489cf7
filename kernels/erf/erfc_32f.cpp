// SPDX-License-Identifier: MIT
//
// erfc of single-precision arrays from a = |x| = k/32 + r, k = round(32 a), r exact; 2 - erfc(a)
// for negative x, where nothing cancels.
//
//   A24        erfc(a) = scale (1 + d1 r + ... + d7 r^7) by cell, on the x87 unit at 53-bit
//              precision; the sign chooses factor and constant of the last step. One by one from
//              9.1875 on in magnitude, where results may be subnormal
//   A21, A11   erfc(a) = c0 e^-w (1 + c1 r + c2 r^2 + c3 r^3) by cell, w = r (a + k/32): a^2 is
//              (k/32)^2 + w, |w| < 0.29. Packed; A11 without c2 and c3, the exponential of degree 5
//              or 3. Elements from 9.1875 on in magnitude, whose results may be subnormal, as under
//              A24
//   from 10.0541954 on   +0
//
// The polynomials of A24 are off by at most 2^-34.83 of the result where it is normal, by 2^-33.97
// below, the 53-bit steps by 2^-49.
//
// Worst errors (every input from -4.5 on): A24 0.5000 ulp, at 0xB76C9F62; A21
// 2^-21.77 of the result, at 0x40E282BB; A11 2^-11.99, at 0x3C7FFF7C.
#include "kernels/erf/erfc_32f_step.h"
#include "kernels/nearest_32f.h"
#include "kernels/screens.h"

constexpr uint32_t kUnderflow = 0x4120DDFC;  // 10.0541954: half the smallest subnormal

constexpr uint32_t kMargin = 0x4A000;  // 2^-34.8

// By the sign.
struct Side {
  double factor, constant;
};
static const Side kSides[2] = {{1, 0}, {-1, 2}};

LUX_DOUBLE_KERNEL(Erfc);
static constexpr Listed kListed[] = {{0xB76C9F62, 0x3F800085}, {}};

// kAnySize: or subnormal results. They are rounded where those of the least normal binade are, and
// stand there when 2^-126 is added: less than half of the sum is off, by 2^-33.97 of that.
template <int kCount, bool kAnySize>
static inline void extended_block(const float* src, float* dst) {
  alignas(16) float x[4], r[4], shifted[4];
  double y[kCount];
  const __m128 loaded = load_elements<kCount>(src);
  const Reduced reduced = reduce(magnitude_from_least(loaded));
  _mm_store_ps(x, loaded);
  _mm_store_ps(r, reduced.r);
  _mm_store_ps(shifted, reduced.shifted);
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i) {
    const Septic& c = kSeptic[cell_of(shifted + i)];
    const Side& side = kSides[load_bits(x + i) >> 31];
    const long double s = ((c.s[0] * r[i] + c.s[1]) * r[i] + c.s[2]) * r[i] + c.s[3];
    const long double sum =
        ((((s * r[i] + c.d3) * r[i] + c.d2) * r[i] + c.d1) * r[i] + 1.0f) * c.scale;
    const long double result = sum * side.factor + side.constant;
    put_copy(y + i, kAnySize && result < 0x1p-126f ? result + 0x1p-126f : result);
    put(dst + i, result);
  }
  if (any_undecided<kMargin>(y))
    settle<kMargin, by_double<_noxomp_luxsErfc_64f_A53, kListed>>(y, x, dst);
}

// Blocks below the bound; element(x, y): one below kUnderflow, both in magnitude.
template <uint32_t kBound, Unit kUnit, auto kStep, class Block, class Element>
static inline Status erfc_32f(const float* src, float* dst, int32_t len, Block block,
                              Element element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<BothNearest<X87_DOUBLE>, 4>(
      arrays, len,
      with_wide_step<kUnit, kStep, kUnit != Unit::kSse>(arrays, len,
                                                        [=](int32_t i, int32_t last) {
                                                          return blocks_below<4>(src, dst, kBound,
                                                                                 i, last, block);
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
  return erfc_32f<kNormal, Unit::kSse, kStep>(
      src, dst, len, [](const float* x, float* y) { packed_block<kTerms, kPower, 4>(x, y); },
      [](const float* x, float* y) {
        if (magnitude<float>(load_bits(x)) < kNormal)
          packed_block<kTerms, kPower, 1>(x, y);
        else
          extended_block<1, true>(x, y);
      });
}

LUX_KERNEL(Erfc, 32f, A24, 1_1) {
  return erfc_32f<kNormal, Unit::kBoth, &WideLibrary::Erfc_32f_A24>(
      src, dst, len, [](const float* x, float* y) { extended_block<4, false>(x, y); },
      [](const float* x, float* y) { extended_block<1, true>(x, y); });
}

LUX_KERNEL(Erfc, 32f, A21, 1_1) {
  return packed_erfc<4, kPower21, &WideLibrary::Erfc_32f_A21>(src, dst, len);
}
LUX_KERNEL(Erfc, 32f, A11, 1_1) {
  return packed_erfc<2, kPower11, &WideLibrary::Erfc_32f_A11>(src, dst, len);
}
