// SPDX-License-Identifier: MIT
//
// Inverse error function of single-precision arrays, by polynomials of cells in w = 1 - |x|:
//
//   cell        the nearest of the numbers 2^-e (1 + j/16), from 2^-24, next to 1, up to 1
//   u           w, which is exact from |x| = 1/2 on; |x| in the cells from w = 1/2 on, whose w may
//               be rounded: a neighbouring cell serves as well at a bound
//   y = P(u)    with the sign of x; the last cell, around 0, has no constant term
//
// A24: quintics on the x87 unit at 53-bit precision, off by at most 2^-38.7 of y; the steps add
// less than 2^-48, so that the last rounding is the only one that counts, also to a subnormal.
//
// A21: cubics, off by 2^-22.4 with their rounded coefficients; A11: linear functions, off by
// 2^-12.6. Packed, the coefficients of four cells loaded and transposed. Below 2^-125 sqrt(pi)/2 x
// by integers.
//
// Worst errors (every positive input): A24 0.50000 ulp, at 0x3BBA61FD; A21
// 2^-21.42 of the result, at 0xBF02382D; A11 2^-12.60, at 0x3C800014.
#include "kernels/frame.h"
#include "kernels/erf/erfinv_32f_step.h"
#include "kernels/nearest_32f.h"
#include "kernels/screens.h"

constexpr uint32_t kMargin = 0x5000;  // 2^-38.7 and 2^-48

LUX_DOUBLE_KERNEL(ErfInv);
static constexpr Listed kListed[] = {{}};

template <int kCount>
static inline void quintic_block(const float* src, float* dst) {
  alignas(16) float argument[4], u[4], w[4], sign[4];
  double y[kCount];
  const __m128 x = load_elements<kCount>(src);
  const Reduced r = reduce(x);
  _mm_store_ps(argument, x);
  _mm_store_ps(u, r.u);
  _mm_store_ps(w, r.w);
  _mm_store_ps(sign, sign_of(x));
#pragma GCC unroll 4
  for (int i = 0; i < kCount; ++i) {
    const double(&c)[6] = kQuintic[cell_of(w + i)];
    const double t = u[i];
    const long double result = ((((c[0] * t + c[1]) * t + c[2]) * t + c[3]) * t + c[4]) * t + c[5];
    put_copy(y + i, result);
    put(dst + i, result);
    set_upper_bits(dst + i, load_bits(sign + i));
  }
  if (any_undecided<kMargin>(y))
    settle<kMargin, by_double<_noxomp_luxsErfInv_64f_A53, kListed>>(y, argument, dst);
}

static inline bool all_packed(const float* x) {
  return none_outside<4>(
      [=](int lane) { return outside(upper_magnitude(x + lane), kLeast, kOne); });
}

// sqrt(pi)/2 |x| below kLeast, where the pattern of a number is the number in units of 2^-149.
static inline uint32_t tiny(uint32_t a) {
  constexpr uint64_t kHalfRootOfPi = 0xE2DFC48E;  // times 2^32
  return uint32_t((a * kHalfRootOfPi + 0x80000000u) >> 32);
}

template <auto kPolynomial>
static inline void packed_element(const float* src, float* dst) {
  const uint32_t x = load_bits(src), a = magnitude<float>(x);
  if (a < kLeast)
    store_bits(dst, (x ^ a) | tiny(a));
  else
    packed_block<kPolynomial, 1>(src, dst);
}

// screened(x): whether block(x, y) computes the four elements from x on; element(x, y) computes any
// below 1 in magnitude.
template <class Control, auto kStep, class Screened, class Block, class Element>
static inline Status erfinv(const float* src, float* dst, int32_t len, Screened screened,
                            Block block, Element element) {
  const Arrays<float> arrays = {src, src, dst, dst};
  return run_kernel<Control, 4>(
      arrays, len,
      with_wide_step<kUnitOf<Control>, kStep, kUnitOf<Control> != Unit::kSse>(
          arrays, len,
          [=](int32_t i, int32_t last) {
            for (; i < last && screened(src + i); i += 4) block(src + i, dst + i);
            return i;
          }),
      [&](int32_t i, Status* status) {
        const uint32_t x = load_bits(src + i), a = magnitude<float>(x);
        if (a < kOne) {
          element(src + i, dst + i);
        } else if (a > Format<float>::kInf) {
          store_bits(dst + i, quieted<float>(x));
        } else if (a == kOne) {
          store_bits(dst + i, (x ^ a) | Format<float>::kInf);
          _ErrorCall(arrays, LUX_POLE, i, status);
        } else {
          store_bits(dst + i, Format<float>::kDefaultNaN);
          _ErrorCall(arrays, LUX_DOMAIN, i, status);
        }
      });
}

template <auto kPolynomial, auto kStep>
static inline Status packed_erfinv(const float* src, float* dst, int32_t len) {
  return erfinv<SseNearest, kStep>(
      src, dst, len, all_packed,
      [](const float* x, float* y) { packed_block<kPolynomial, 4>(x, y); },
      packed_element<kPolynomial>);
}

LUX_KERNEL(ErfInv, 32f, A24, 1_1) {
  return erfinv<BothNearest<X87_DOUBLE>, &WideLibrary::ErfInv_32f_A24>(
      src, dst, len, [](const float* x) { return all_below<4>(x, kOne); },
      [](const float* x, float* y) { quintic_block<4>(x, y); },
      [](const float* x, float* y) { quintic_block<1>(x, y); });
}
LUX_KERNEL(ErfInv, 32f, A21, 1_1) {
  return packed_erfinv<cubic, &WideLibrary::ErfInv_32f_A21>(src, dst, len);
}
LUX_KERNEL(ErfInv, 32f, A11, 1_1) {
  return packed_erfinv<linear, &WideLibrary::ErfInv_32f_A11>(src, dst, len);
}
