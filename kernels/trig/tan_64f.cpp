// SPDX-License-Identifier: MIT
//
// Tangent of double-precision arrays, on the x87 unit at 64-bit precision.
//
//   |x| < 128000  x = j pi/32 + z by subtraction of j times pi/32 in three parts, |z| <= pi/64,
//                 tan x = (S + C t) / (C - S t), S = sin(j pi/32), C = cos(j pi/32), t = tan z by a
//                 polynomial: A53 of degree 11 with S and C to 64 bits, A50 of degree 9 with doubles
//   otherwise     by the handlers, with the whole block, and so with |x| < 2^-252 and zeros
//
// Worst error found: A53 0.5012 ulp, at 0xF8CBAD43AAB9C95B, A50 1.6506 ulp, at 0x40E47F692A295818
// (sampled against high precision).
#include "kernels/frame.h"
#include "kernels/trig/large_argument.h"
#include "kernels/trig/pi_32.h"

constexpr uint32_t kTiny = 0x30300000;   // upper word of 2^-252
constexpr uint32_t kBound = 0x40FF4000;  // upper word of 128000.0

static inline bool in_range(const double* x) { return upper_magnitude(x) - kTiny < kBound - kTiny; }

static inline bool all_in_range(const double* x) {
  return in_range(x) && in_range(x + 1) && in_range(x + 2) && in_range(x + 3);
}

// Whole blocks with an element out of range go to the handler whole; behind the last whole block each
// element counts alone.
template <class Tangent>
static inline Status tan_64f(const double* src, double* dst, int32_t len, const Tangent& tangent,
                             void (*handler)(int32_t, const double*, double*, Status*)) {
  const int32_t whole = len - len % 4;
  const auto blocks = [&](int32_t i, int32_t last) {
    for (; i < last && all_in_range(src + i); i += 4) {
      const Step a = nearest_step(in_memory(src + i)), b = nearest_step(in_memory(src + i + 1));
      const Step c = nearest_step(in_memory(src + i + 2)), d = nearest_step(in_memory(src + i + 3));
      in_memory(dst + i) = double(tangent(a));
      in_memory(dst + i + 1) = double(tangent(b));
      in_memory(dst + i + 2) = double(tangent(c));
      in_memory(dst + i + 3) = double(tangent(d));
    }
    return i;
  };
  const auto large = [&](int32_t i, int32_t last) {
    return noxd_large_tangents(src, dst, i, last);
  };
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      Arrays<double>{src, src, dst, dst}, len,
      [&](int32_t i, int32_t last) { return alternating(i, last, blocks, large); },
      [&](int32_t i, Status* status) {
        if (i >= whole && in_range(src + i))
          in_memory(dst + i) = double(tangent(nearest_step(in_memory(src + i))));
        else
          handler(i, src, dst, status);
      });
}

LUX_KERNEL(Tan, 64f, A53, 1_1) {
  return tan_64f(
      src, dst, len, [](const Step& step) { return tan_of(step); }, noxdTan_SC_HA);
}

LUX_KERNEL(Tan, 64f, A50, 1_1) {
  return tan_64f(
      src, dst, len, [](const Step& step) { return short_tan_of(step); }, noxdTan_SC_LA);
}
