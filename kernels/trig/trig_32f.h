// SPDX-License-Identifier: MIT
//
// What the single-precision sine, cosine and tangent share: the walk over the array and the
// reduction by multiples of pi or pi/2, r = (x - n high) - n low.
//
// A24 computes on the x87 unit at 53-bit precision, in passes over up to 32 elements: one element
// is a chain of operations that would leave the unit waiting. A21 and A11 are one computation on
// four packed lanes; only n high and n low are subtracted on the x87 unit, at 64-bit precision, and
// r is rounded to single. Where n = 0, r = x exactly, so that small arguments need no path of their
// own.
#ifndef LUX_KERNELS_TRIG_TRIG_32F_H
#define LUX_KERNELS_TRIG_TRIG_32F_H

#include "kernels/frame.h"
#include "kernels/trig/large_argument.h"
#include "kernels/trig/trig_32f_step.h"

// Blocks of NaNs, which come out quiet, or of zeros, where a function leaves them out: the sine and
// the tangent are the zero itself, the cosine is 1.
static inline int32_t blocks_alike(const Arrays<float>& a, int32_t i, int32_t last) {
  for (; i < last; i += 4) {
    uint32_t x[4], nans = ~0u, any = 0;
#pragma GCC unroll 4
    for (int32_t lane = 0; lane < 4; ++lane) {
      x[lane] = load_bits(a.src1 + i + lane);
      const uint32_t m = magnitude<float>(x[lane]);
      nans &= Format<float>::kInf - m;
      any |= m;
    }
    const bool zeros = any == 0;
    if (!zeros && int32_t(nans) >= 0) break;
    const uint32_t quiet = zeros ? 0 : Format<float>::kQuiet;
#pragma GCC unroll 4
    for (int32_t lane = 0; lane < 4; ++lane) {
      store_bits(a.dst1 + i + lane, x[lane] | quiet);
      if (a.dst2 != a.dst1)
        store_bits(a.dst2 + i + lane, zeros ? Format<float>::kOne : x[lane] | quiet);
    }
  }
  return i;
}

template <class InRange>
static inline bool block_in_range(const float* x, const InRange& in_range) {
  return in_range(load_bits(x)) && in_range(load_bits(x + 1)) && in_range(load_bits(x + 2)) &&
         in_range(load_bits(x + 3));
}

// Closures hold others by reference: GCC copies them word by word, in loops.
//
// in_range(x)          whether the kernel itself can reduce an element with this pattern
// blocks(first, last)  the kernel's fast step
// single(i)            computes elements in range behind the last whole block, from i on, and returns
//                      the first that is left
// large(first, last)   blocks of large elements only, one of them out of range at least
// handler(i, status)   any element
//
// Any other block with an element out of range goes to the handler as a whole.
template <class Control, Unit kUnit, auto kStep, class InRange, class Blocks, class Single,
          class Large, class Handler>
static inline Status run_trig(const Arrays<float>& a, int32_t len, const InRange& in_range,
                              const Blocks& blocks, const Single& single, const Large& large,
                              const Handler& handler) {
  const float* const src = a.src1;
  const int32_t whole = len - len % 4;
  int32_t done = 0;  // elements before it, behind the last whole block, are computed
  return run_kernel<Control, 4>(
      a, len,
      with_wide_step<kUnit, kStep>(
          a, len,
          [&](int32_t first, int32_t end) {
            return alternating(first, end, blocks, [&](int32_t i, int32_t last) {
              const int32_t next = blocks_alike(a, i, last);
              return next > i || upper_magnitude(src + i) >= Format<float>::kInf ? next
                                                                                 : large(i, last);
            });
          }),
      [&](int32_t i, Status* status) {
        if (i < done) return;
        if (i >= whole && in_range(load_bits(src + i)))
          done = single(i);
        else
          handler(i, status);
      });
}

// r of one element, with high and low on the stack.
// clang-format off
#define REDUCE(load, n, x, store, r)                            \
  load " " n "; fmul %%st(1), %%st; fsubrs " x "\n\t"           \
  load " " n "; fmul %%st(3), %%st; fsubrp %%st, %%st(1)\n\t"   \
  store " " r "\n\t"
// clang-format on

// ---- A24

constexpr int32_t kChunk = 32;

static inline void reduce_pass(const float* x, const int32_t* n, double* r, int32_t count,
                               const Period& period) {
  const long double high = load_extended(&period.high), low = load_extended(&period.low);
  for (int32_t i = 0; i < count; ++i)
    asm volatile(REDUCE("fildl", "%[n]", "%[x]", "fstpl", "%[r]")
                 : [r] "=m"(r[i])
                 : [x] "m"(x[i]), [n] "m"(n[i]), "t"(high), "u"(low)
                 : "st(2)", "st(3)");
}

// Rounded to single, then the sign changed.
static inline void store_signed(float* to, double value, uint32_t sign) {
  const float rounded = store_f32(float(value));
  store_bits(to, load_bits(&rounded) ^ sign);
}

// compute(first, count): up to kChunk elements in range.
template <auto kStep, class InRange, class Compute, class Large, class Handler>
static inline Status run_a24(const Arrays<float>& a, int32_t len, const InRange& in_range,
                             const Compute& compute, const Large& large, const Handler& handler) {
  const float* const src = a.src1;
  return run_trig<X87Nearest<X87_DOUBLE>, Unit::kX87, kStep>(
      a, len, in_range,
      [&](int32_t first, int32_t last) {
        while (first < last) {
          const int32_t limit = last - first < kChunk ? last : first + kChunk;
          int32_t end = first;
          while (end < limit && block_in_range(src + end, in_range)) end += 4;
          if (end == first) break;
          compute(first, end - first);
          first = end;
        }
        return first;
      },
      [&](int32_t i) {
        int32_t end = i + 1;
        while (end < len && in_range(load_bits(src + end))) ++end;
        compute(i, end - i);
        return end;
      },
      large, handler);
}

// ---- A21 and A11

static inline bool ordinary(uint32_t x, uint32_t smallest, uint32_t bound) {
  return 2 * x - 2 * smallest <= 2 * (bound - smallest);
}

#define REDUCE_LANE(lane) \
  REDUCE("flds", "4*" #lane "(%[n])", "4*" #lane "(%[x])", "fstps", "4*" #lane "(%[r])")

static inline void reduce_block(const float* x, __m128 multiple, Lanes* r, long double high,
                                long double low) {
  Lanes n;
  _mm_store_ps(n.lane, multiple);
  asm volatile(REDUCE_LANE(0) REDUCE_LANE(1) REDUCE_LANE(2) REDUCE_LANE(3)
               : "=m"(*r)
               : [x] "r"(x), [r] "r"(r), [n] "r"(n.lane), "t"(high), "u"(low), "m"(n),
                 "m"(*reinterpret_cast<const UnalignedLanes*>(x))
               : "st(2)", "st(3)");
}

// A packed load soon after the four single stores of r waits for them, so a block is finished when
// the eighth block behind it is due.
//
// smallest                        from here on an element up to the bound is ordinary
// locate(x)                       n, on the grid of integers, and the multiple of the period
// finish(shifted, r, s, y1, y2)   stores the results; s stands for r in terms of higher order
template <auto kStep, class InRange, class Locate, class Finish, class Large, class Handler>
static inline Status run_a21(const Arrays<float>& a, int32_t len, const Period& period,
                             uint32_t smallest, uint32_t bound, const InRange& in_range,
                             const Locate& locate, const Finish& finish, const Large& large,
                             const Handler& handler) {
  constexpr uint32_t kDelay = 8;
  return run_trig<BothNearest<X87_EXTENDED>, Unit::kBoth, kStep>(
      a, len, in_range,
      [&](int32_t first, int32_t last) {
        const float* const src = a.src1;
        float *const dst1 = a.dst1, *const dst2 = a.dst2;
        Lanes shifted[kDelay], r[kDelay];
        bool small[kDelay];
        const long double high = load_extended(&period.high), low = load_extended(&period.low);
        int32_t i = first, done = first;
        const auto finish_one = [&] {
          const uint32_t slot = uint32_t(done) / 4 % kDelay;
          const __m128 reduced = _mm_load_ps(r[slot].lane);
          __m128 s = reduced;
          if (__builtin_expect(small[slot], 0)) s = unless_tiny(s);
          finish(_mm_load_ps(shifted[slot].lane), reduced, s, dst1 + done, dst2 + done);
          done += 4;
        };
        const auto is_ordinary = [&](uint32_t x) { return ordinary(x, smallest, bound); };
        for (; i < last; i += 4) {
          const bool with_small = !block_in_range(src + i, is_ordinary);
          if (__builtin_expect(with_small, 0) && !block_in_range(src + i, in_range)) break;
          if (i - done == 4 * kDelay) finish_one();
          const uint32_t slot = uint32_t(i) / 4 % kDelay;
          __m128 x = load_lanes(src + i);
          if (__builtin_expect(with_small, 0)) x = nudged(x);
          small[slot] = with_small;
          const OnGrid at = locate(x);
          _mm_store_ps(shifted[slot].lane, at.shifted);
          reduce_block(src + i, at.multiple, &r[slot], high, low);
        }
        while (done < i) finish_one();
        return i;
      },
      [&](int32_t i) {
        const long double high = load_extended(&period.high), low = load_extended(&period.low);
        const bool small = !ordinary(load_bits(a.src1 + i), smallest, bound);
        const __m128 x = load_lane(a.src1 + i);
        const OnGrid at = locate(small ? nudged(x) : x);
        float n, r;
        Lanes y1, y2;
        _mm_store_ss(&n, at.multiple);
        asm volatile(REDUCE("flds", "%[n]", "%[x]", "fstps", "%[r]")
                     : [r] "=m"(r)
                     : [x] "m"(in_memory(a.src1 + i)), [n] "m"(n), "t"(high), "u"(low)
                     : "st(2)", "st(3)");
        const __m128 reduced = _mm_load_ss(&r);
        finish(at.shifted, reduced, small ? unless_tiny(reduced) : reduced, y1.lane, y2.lane);
        store_bits(a.dst1 + i, load_bits(y1.lane));
        if (a.dst2 != a.dst1) store_bits(a.dst2 + i, load_bits(y2.lane));
        return i + 1;
      },
      large, handler);
}

#endif
