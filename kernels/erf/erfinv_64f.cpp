// SPDX-License-Identifier: MIT
//
// Inverse error function of double-precision arrays, on the x87 unit at 64-bit precision.
//
//   w = 1 - |x|, exact from |x| = 1/2 on, chooses the cell: the nearest of the numbers
//   2^-e (1 + j/8), from 2^-53, next to 1, up to 1. With t = |x| - centre, exact everywhere,
//
//   y = c0 + t (c1 + t (c2 + ... + t^9 c11)),  |t| at most 1/16 of the cell's w.
//
// c0 and c1 stand in two parts, since the others are small beside them. The cell around 0 has the
// centre 0 and no c0, so that small arguments keep their relative accuracy and subnormal ones are
// rounded once. Odd and even powers beyond t are summed by themselves: half the latency.
//
// The polynomials are off by at most 2^-62.9 of y with their rounded coefficients; the last
// products and sums round at 64 bits: together about 0.002 ulp beside the last rounding.
//
// Worst error found 0.5012 ulp, at 0xBFA02E82853B3CFF (sampled against 200 bits).
#include "kernels/frame.h"
#include "kernels/erf/generated/erfinv_64f_table.h"  // kCell

constexpr int kCellShift = 20 - kCellBits;  // within the upper word
constexpr uint32_t kHalfCell = 1u << (kCellShift - 1);
constexpr uint32_t kFirstCell = uint32_t(kFirstBinade + Format<double>::kBias) << kCellBits;

// Below 1 in magnitude.
static inline void element(const double* x, double* y) {
  const uint32_t sign = upper_word(x) & kSignUpper;
  const long double a = magnitude_of(x);
  const double w = store_f64(double(1 - a));
  const Cell& k = kCell[((upper_word(&w) + kHalfCell) >> kCellShift) - kFirstCell];
  const long double t = a - k.centre, square = t * t;
  const double(&c)[10] = k.upper;
  const long double odd =
      (((c[0] * square + c[2]) * square + c[4]) * square + c[6]) * square + c[8];
  const long double even =
      (((c[1] * square + c[3]) * square + c[5]) * square + c[7]) * square + c[9];
  const long double slope = k.c[1] + (k.c_low[1] + t * (even + t * odd));
  in_memory(y) = double(k.c[0] + (k.c_low[0] + t * slope));
  set_upper_bits(y, sign);
}

static inline bool is_below_one(const double* x) {
  return upper_magnitude(x) < Upper<double>::kOne;
}

static Status erfinv_64f(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 1>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        for (; i < last && is_below_one(src + i); ++i) element(src + i, dst + i);
        return i;
      },
      [&](int32_t i, Status* status) {
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (a > Format<double>::kInf) {
          store_bits(dst + i, quieted<double>(x));
        } else if (a == Format<double>::kOne) {
          store_bits(dst + i, (x ^ a) | Format<double>::kInf);
          _ErrorCall(arrays, LUX_POLE, i, status);
        } else {
          store_bits(dst + i, Format<double>::kDefaultNaN);
          _ErrorCall(arrays, LUX_DOMAIN, i, status);
        }
      });
}

LUX_KERNELS_64F(ErfInv, 1_1, erfinv_64f)
