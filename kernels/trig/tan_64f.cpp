// SPDX-License-Identifier: MIT
#include "kernels/arith/frame.h"
#include "kernels/trig/large_argument.h"
#include "kernels/trig/pi_32.h"

constexpr uint32_t kTiny = 0x30300000;   // high word of 2^-252
constexpr uint32_t kBound = 0x40FF4000;  // high word of 128000.0

static inline bool in_range(const double* x) {
  return (load_words(x).upper & 0x7FFFFFFF) - kTiny < kBound - kTiny;
}

static inline bool all_in_range(const double* x) {
  return in_range(x) && in_range(x + 1) && in_range(x + 2) && in_range(x + 3);
}

static Status tan_53(const double* src, double* dst, int32_t len) {
  return run_kernel<X87Nearest<X87_EXTENDED>, 4>(
      Arrays<double>{src, src, dst, dst}, len,
      [=](int32_t i, int32_t last) {
        for (; i < last && all_in_range(src + i); i += 4) {
          const Step a = nearest_step(src[i]), b = nearest_step(src[i + 1]);
          const Step c = nearest_step(src[i + 2]), d = nearest_step(src[i + 3]);
          dst[i] = double(tan_of(a));
          dst[i + 1] = double(tan_of(b));
          dst[i + 2] = double(tan_of(c));
          dst[i + 3] = double(tan_of(d));
        }
        return i;
      },
      [=](int32_t i, Status* status) { noxdTan_SC_HA(i, src, dst, status); });
}

LUX_KERNELS_64F(Tan, 1_1, tan_53)
