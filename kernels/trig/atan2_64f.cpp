// SPDX-License-Identifier: MIT
//
// Angle of the point (x, y) = (src2, src1) in double precision; the method is in
// kernels/trig/arctangent_64f.h. Left of the vertical axis the angle is pi less that of the point's
// mirror image; y gives the sign. An underflowing quotient is rounded once, at the store.
// Worst error found 0.5005 ulp, at (0x3E8D5FF1DC42F427, 0x405B113454D08844) (sampled against 140
// bits).
#include "kernels/screens.h"
#include "kernels/trig/arctangent_64f.h"

static const float kSide[2] = {1, -1};

// The upper word of a/b, which chooses the cell alone: where the magnitudes are more than 2^16
// apart, one on the same side, since a/b itself may not fit a double.
static inline uint32_t upper_quotient(const double* y, const double* x) {
  constexpr uint32_t kFar = 16 << 20, kLarge = 0x7FE00000;
  const uint32_t apart = upper_magnitude(y) - upper_magnitude(x);
  if (__builtin_expect(apart + kFar > 2 * kFar, 0)) return int32_t(apart) > 0 ? kLarge : 0;
  const double quotient = store_f64(double(magnitude_of(y) / magnitude_of(x)));
  return upper_word(&quotient);
}

static inline void element(const double* y, const double* x, double* dst) {
  const uint32_t sign = upper_word(y) & kSignUpper, left = upper_word(x) >> 31;
  const long double a = magnitude_of(y), b = magnitude_of(x);
  const Cell& c = cell_of(upper_quotient(y, x));
  const Pair& angle = c.angle[left];
  in_memory(dst) = double(turned(c, a, b) * kSide[left] + angle.low + angle.high);
  set_upper_bits(dst, sign);
}

// At least one of the two is zero or infinite, and none a NaN: the angle without its sign.
__attribute__((noinline, cold)) static uint64_t special_angle(uint64_t a, uint64_t b, bool left) {
  constexpr uint64_t kInf = Format<double>::kInf, kPi = 0x400921FB54442D18,
                     kHalfPi = 0x3FF921FB54442D18, kQuarterPi = 0x3FE921FB54442D18,
                     kThreeQuarters = 0x4002D97C7F3321D2;
  if (a == kInf && b == kInf) return left ? kThreeQuarters : kQuarterPi;
  if (a == 0 || b == kInf) return left ? kPi : 0;
  return kHalfPi;
}

static Status atan2_64f(const double* src1, const double* src2, double* dst, int32_t len) {
  return run_kernel<X87Nearest<X87_EXTENDED>, 2>(
      Arrays<double>{src1, src2, dst, dst}, len,
      [=](int32_t i, int32_t last) {
        for (; i < last; i += 2) {
          if (!(is_normal(src1 + i) & is_normal(src2 + i) & is_normal(src1 + i + 1) &
                is_normal(src2 + i + 1)))
            break;
          element(src1 + i, src2 + i, dst + i);
          element(src1 + i + 1, src2 + i + 1, dst + i + 1);
        }
        return i;
      },
      [=](int32_t i, Status*) {
        constexpr uint64_t kInf = Format<double>::kInf;
        const uint64_t y = load_bits(src1 + i), x = load_bits(src2 + i), a = magnitude<double>(y),
                       b = magnitude<double>(x);
        if (a > kInf)
          store_bits(dst + i, quieted<double>(y));
        else if (b > kInf)
          store_bits(dst + i, quieted<double>(x));
        else if (a == 0 || b == 0 || a == kInf || b == kInf)
          store_bits(dst + i, special_angle(a, b, x != b) | (y ^ a));
        else
          element(src1 + i, src2 + i, dst + i);
      });
}

LUX_KERNELS_64F(Atan2, 2_1, atan2_64f)
