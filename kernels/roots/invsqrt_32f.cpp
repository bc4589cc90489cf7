// SPDX-License-Identifier: MIT
//
// Reciprocal square root of single-precision arrays, packed, from the processor's estimate.
//
//   y = the estimate cut to 9 bits,  e = x (y y) - 1,
//   1/sqrt(x) = y + y (e p),  p = ((1 + e)^(-1/2) - 1) / e to third order.
//
// Sixteen elements below 2^126 are computed at once; from there on y y is subnormal. Otherwise they
// are done in eights, scaled where they are large, which leaves the bits alone, and so are four
// that are left.
//
// Twelve packed operations, and fourteen of the test for sixteen elements: where the processor
// starts three a cycle, no less than 1.29 cycles an element.
//
// Of an eight that holds a zero, a subnormal, a negative number, an infinity or a NaN, every
// element is computed on the x87 unit as 1 / sqrt(x), under the caller's precision and rounding,
// since this kernel leaves that unit's control word alone; the zeros of such an eight are reported
// before its negative numbers.
//
// Worst error 0.9846 ulp, at 0x0085B984 (every input, with the estimate of an Intel Xeon 6/207).
#include "kernels/roots/root_32f.h"

constexpr int32_t kBlock = 8;

// Any positive normal number.
static inline __m128 inverse_root_scaled(__m128 x) {
  const __m128 y = estimate(x), one = all_lanes(1.0f);
  const __m128 large = _mm_cmple_ps(all_lanes(0x1p+64f), x);
  return corrected(y, y * select(large, all_lanes(4.0f), one),
                   x * select(large, all_lanes(0.0625f), one));
}

constexpr uint32_t kQuietNaN = Format<float>::kInf | Format<float>::kQuiet;

// The unit takes long for a quiet NaN, which it gives back; for that and for +infinity it raises
// nothing.
static inline void x87_inverse_root(const float* src, float* dst) {
  const uint32_t x = load_bits(src);
  if (__builtin_expect(magnitude<float>(x) >= Format<float>::kInf, false)) {
    if (magnitude<float>(x) >= kQuietNaN) return store_bits(dst, x);
    if (x == Format<float>::kInf) return store_bits(dst, 0);
  }
  asm volatile(
      "flds %1\n\t"
      "fsqrt\n\t"
      "fld1\n\t"
      "fdiv %%st(1), %%st\n\t"
      "fstps %0\n\t"
      "fstp %%st"
      : "=m"(*dst)
      : "m"(*src)
      : LUX_X87_STACK);
}

static inline bool is_negative(uint32_t x) {
  return x - Format<float>::kSign - 1 < Format<float>::kInf;  // not -0, and no NaN
}

// Their common bits are those of a quiet NaN.
static inline bool all_quiet_nans(__m128 a, __m128 b) {
  const __m128 two = _mm_and_ps(a, b), one = _mm_and_ps(two, _mm_movehl_ps(two, two));
  float common;
  store_lane(&common, _mm_and_ps(one, _mm_shuffle_ps(one, one, 1)));
  return (load_bits(&common) & kQuietNaN) == kQuietNaN;
}

__attribute__((noinline, cold)) static void special_block(const Arrays<float>& arrays,
                                                          int32_t first, Status* status) {
  const float* const src = arrays.src1 + first;
  float* const dst = arrays.dst1 + first;
  const __m128 a = load_lanes(src), b = load_lanes(src + 4);
  if (all_quiet_nans(a, b)) {
    store_lanes(dst, a);
    store_lanes(dst + 4, b);
    return;
  }
  uint32_t x[kBlock];
  for (int32_t i = 0; i < kBlock; ++i) x[i] = load_bits(src + i);
  for (int32_t i = 0; i < kBlock; ++i) x87_inverse_root(src + i, dst + i);
  for (int32_t i = 0; i < kBlock; ++i)
    if (is_zero<float>(x[i])) _ErrorCall(arrays, LUX_POLE, first + i, status);
  for (int32_t i = 0; i < kBlock; ++i)
    if (is_negative(x[i])) _ErrorCall(arrays, LUX_DOMAIN, first + i, status);
}

static void special_element(const Arrays<float>& arrays, int32_t i, Status* status) {
  const uint32_t x = load_bits(arrays.src1 + i);
  x87_inverse_root(arrays.src1 + i, arrays.dst1 + i);
  if (is_zero<float>(x)) _ErrorCall(arrays, LUX_POLE, i, status);
  if (is_negative(x)) _ErrorCall(arrays, LUX_DOMAIN, i, status);
}

static inline bool sixteen_ordinary(const float* x) {
  return all_within(x, Format<float>::kSmallestNormal, kLarge);
}

template <int kCount>
static inline bool all_positive_normal(const float* x) {
  return none_outside<kCount>([=](int lane) { return outside_positive_normal(x + lane); });
}

// Sixteen a turn while nothing is special; at most the last four are left.
static inline int32_t inverse_root_blocks(const Arrays<float>& arrays, int32_t i, int32_t last,
                                          Status* status) {
  const float* const src = arrays.src1;
  float* const dst = arrays.dst1;
  while (i < last) {
    for (; i + 12 < last && sixteen_ordinary(src + i); i += 2 * kBlock) {
      const __m128 a = inverse_root(load_lanes(src + i)), b = inverse_root(load_lanes(src + i + 4)),
                   c = inverse_root(load_lanes(src + i + 8)),
                   d = inverse_root(load_lanes(src + i + 12));
      store_lanes(dst + i, a);
      store_lanes(dst + i + 4, b);
      store_lanes(dst + i + 8, c);
      store_lanes(dst + i + 12, d);
    }
    const int32_t end = i + 2 * kBlock < last ? i + 2 * kBlock : last;
    for (; i + 4 < end; i += kBlock) {
      if (all_positive_normal<kBlock>(src + i)) {
        const __m128 a = inverse_root_scaled(load_lanes(src + i)),
                     b = inverse_root_scaled(load_lanes(src + i + 4));
        store_lanes(dst + i, a);
        store_lanes(dst + i + 4, b);
      } else {
        special_block(arrays, i, status);
      }
    }
    if (i < end) {
      if (!all_positive_normal<4>(src + i)) return i;
      store_lanes(dst + i, inverse_root_scaled(load_lanes(src + i)));
      i += 4;
    }
  }
  return i;
}

static Status invsqrt_32f(const float* src, float* dst, int32_t len) {
  const Arrays<float> arrays = {src, src, dst, dst};
  Status blocks = LUX_OK;
  const Status tail = run_kernel<SseNearest, 4>(
      arrays, len,
      with_wide_step<Unit::kSse, &WideLibrary::InvSqrt_32f_A24>(
          arrays, len,
          [&](int32_t i, int32_t last) { return inverse_root_blocks(arrays, i, last, &blocks); }),
      [&](int32_t i, Status* status) {
        if (is_positive_normal(src + i))
          store_lane(dst + i, inverse_root_scaled(load_all_lanes(src + i)));
        else
          special_element(arrays, i, status);
      });
  return tail ? tail : blocks;  // the tail's reports are the later ones
}

LUX_KERNELS_32F(InvSqrt, 1_1, invsqrt_32f)
