// SPDX-License-Identifier: MIT
//
// What the double square root and reciprocal square root share, on the x87 unit at 64-bit
// precision.
//
//   x = v 4^m with v in [1/2, 2): the exponent field of v is 0x3FE with the lowest bit of x's own.
//   z = the significand of x in [1, 2),  i = its 7 leading fraction bits,
//   y = q(z) P, about 1/sqrt(v), with the quadratic q of interval i and P = sqrt(2) for an even
//       biased exponent, 1 for an odd one,
//   Newton step: 1/sqrt(v) = y (3 - v y y) / 2, sqrt(v) = v times that.
//
// The halving and the power of two go to the exponent of the stored double by integer addition,
// which is exact because every result is a normal number.
#ifndef LUX_KERNELS_ROOTS_ROOT_64F_H
#define LUX_KERNELS_ROOTS_ROOT_64F_H

#include "kernels/frame.h"
#include "kernels/roots/generated/root_64f_table.h"  // static_const_table
#include "kernels/lanes.h"
#include "kernels/screens.h"

enum Root { kRoot, kInverseRoot };

constexpr uint64_t kNegativeMarker = 0x7FF8A5A55A5A5A5Au;  // tells these results from other NaNs

constexpr uint32_t kFraction = Upper<double>::kFraction, kParity = 0x00100000;
static const BitLanes kFractions = {{~0u, kFraction, ~0u, kFraction}},
                      kFractionsAndParity = {{~0u, kFraction | kParity, ~0u, kFraction | kParity}},
                      kOneFields = {{0, Upper<double>::kOne, 0, Upper<double>::kOne}},
                      kHalfFields = {{0, 0x3FE00000, 0, 0x3FE00000}};

// z and v of a pair, and of the next two; their halves are loaded from where 16 bytes were stored,
// which store forwarding can do.
struct alignas(16) Reduced {
  double z[4], v[4];
};

static inline __m128 masked(__m128 x, const BitLanes& keep, const BitLanes& field) {
  return _mm_or_ps(_mm_and_ps(x, lanes_of(keep)), lanes_of(field));
}

static inline void store_reduced(__m128 pair, double* z, double* v) {
  store_pair(z, masked(pair, kFractions, kOneFields));
  store_pair(v, masked(pair, kFractionsAndParity, kHalfFields));
}

// Assembly. Operands: src and dst, the block; z0 to z3 and v0 to v3, in memory; table; k and j to
// work with; c2, c1, c0, parity and three, offsets in the table. `root` is one of the two FINISH
// macros.
#define ROOT_ELEMENT(lane, root)                        \
  "movl 4+8*" #lane                                     \
  "(%[src]), %[k]\n\t"                                  \
  "fldl %[z" #lane                                      \
  "]\n\t"                                               \
  "movl %[k], %[j]\n\t"                                 \
  "shrl $13, %[j]\n\t"                                  \
  "andl $127, %[j]\n\t"                                 \
  "fmull %c[c2](%[table],%[j],8)\n\t"                   \
  "faddl %c[c1](%[table],%[j],8)\n\t"                   \
  "fmull %[z" #lane                                     \
  "]\n\t"                                               \
  "faddl %c[c0](%[table],%[j],8)\n\t"                   \
  "movl %[k], %[j]\n\t"                                 \
  "shrl $20, %[j]\n\t"                                  \
  "andl $1, %[j]\n\t"                                   \
  "fmull %c[parity](%[table],%[j],8)\n\t" /* y */       \
  "fld %%st\n\t"                                        \
  "fmull %[v" #lane                                     \
  "]\n\t"                                               \
  "fmul %%st(1), %%st\n\t"                              \
  "fsubrs %c[three](%[table])\n\t"                      \
  "shrl $1, %[k]\n\t"                                   \
  "andl $0x7FF00000, %[k]\n\t"                          \
  "fmulp %%st, %%st(1)\n\t" root(lane) "fstpl 8*" #lane \
                                       "(%[dst])\n\t"   \
                                       "addl %[k], 4+8*" #lane "(%[dst])\n\t"
// st is 2 / sqrt(v); k becomes (m - 1) << 20.
#define FINISH_ROOT(lane) "fmull %[v" #lane "]\n\tsubl $0x20000000, %[k]\n\t"
// k becomes (-m - 1) << 20.
#define FINISH_INVERSE_ROOT(lane) "negl %[k]\n\taddl $0x1FE00000, %[k]\n\t"

#define ROOT_LANES(elements)                                                                   \
  {                                                                                            \
    using Table = decltype(static_const_table);                                                \
    uint32_t k, j;                                                                             \
    asm volatile(                                                                              \
        elements                                                                               \
        : [k] "=&r"(k), [j] "=&r"(j)                                                           \
        : [src] "r"(src), [dst] "r"(dst), [table] "r"(&static_const_table), [z0] "m"(r.z[0]),  \
          [z1] "m"(r.z[1]), [z2] "m"(r.z[2]), [z3] "m"(r.z[3]), [v0] "m"(r.v[0]),              \
          [v1] "m"(r.v[1]), [v2] "m"(r.v[2]), [v3] "m"(r.v[3]), [c0] "i"(offsetof(Table, c0)), \
          [c1] "i"(offsetof(Table, c1)), [c2] "i"(offsetof(Table, c2)),                        \
          [parity] "i"(offsetof(Table, parity)), [three] "i"(offsetof(Table, three))           \
        : "cc", LUX_X87_STACK);                                                                \
  }
#define ROOT_BLOCK(root)                                                       \
  ROOT_LANES(ROOT_ELEMENT(0, root) ROOT_ELEMENT(1, root) ROOT_ELEMENT(2, root) \
                 ROOT_ELEMENT(3, root))

// Six registers are all there are, so no instrumentation fits beside the assembly.
template <Root kKind>
__attribute__((no_sanitize("address", "undefined"))) static inline void root_block(
    const double* src, __m128 low_pair, __m128 high_pair, double* dst) {
  Reduced r;
  store_reduced(low_pair, r.z, r.v);
  store_reduced(high_pair, r.z + 2, r.v + 2);
  if constexpr (kKind == kRoot)
    ROOT_BLOCK(FINISH_ROOT)
  else
    ROOT_BLOCK(FINISH_INVERSE_ROOT)
}

// One positive normal number.
template <Root kKind>
__attribute__((no_sanitize("address", "undefined"), noinline)) static void root_element(
    const double* src, double* dst) {
  Reduced r;
  store_reduced(load_half(src), r.z, r.v);
  if constexpr (kKind == kRoot)
    ROOT_LANES(ROOT_ELEMENT(0, FINISH_ROOT))
  else
    ROOT_LANES(ROOT_ELEMENT(0, FINISH_INVERSE_ROOT))
}

static inline bool all_positive_normal(const double* x) {
  return none_outside<4>([=](int lane) { return outside_positive_normal(x + lane); });
}

// Subnormals are computed as 2^996 times themselves.
constexpr double kUp = 0x1p996;
template <Root kKind>
constexpr uint32_t kDown = uint32_t(kKind == kRoot ? -498 : 498) << 20;

// Four numbers above 0, of which some are subnormal. They are joined from halves: a load that spans
// two stores has to wait for both.
template <Root kKind>
static inline void scaled_block(const double* src, double* dst) {
  double scaled[4];
  uint32_t down[4];
  for (int lane = 0; lane < 4; ++lane) {
    const bool subnormal = !is_positive_normal(src + lane);
    put(scaled + lane, (long double)in_memory(src + lane) * (subnormal ? kUp : 1.0));
    down[lane] = subnormal ? kDown<kKind> : 0;
  }
  root_block<kKind>(scaled, load_halves(scaled, scaled + 1), load_halves(scaled + 2, scaled + 3),
                    dst);
  for (int lane = 0; lane < 4; ++lane) add_to_upper_word(dst + lane, down[lane]);
}

static inline bool all_above_zero(const double* x) {
  bool others = false;
  for (int lane = 0; lane < 4; ++lane)
    others |= is_zero<double>(load_bits(x + lane)) | (upper_word(x + lane) >= Upper<double>::kInf);
  return !others;
}

template <Root kKind>
static inline int32_t root_blocks(const double* src, double* dst, int32_t i, int32_t last) {
  for (; i < last; i += 4) {
    if (__builtin_expect(all_positive_normal(src + i), true))
      root_block<kKind>(src + i, load_pair(src + i), load_pair(src + i + 2), dst + i);
    else if (all_above_zero(src + i))
      scaled_block<kKind>(src + i, dst + i);
    else
      break;
  }
  return i;
}

// Zeros and +infinity have their own results.
template <Root kKind>
static inline void root_special(const Arrays<double>& arrays, int32_t i, uint64_t x,
                                Status* status) {
  double* const y = arrays.dst1 + i;
  if (is_positive_normal(arrays.src1 + i)) {
    root_element<kKind>(arrays.src1 + i, y);
  } else if (magnitude<double>(x) > Format<double>::kInf) {
    store_bits(y, quieted<double>(x));
  } else if (x & Format<double>::kSign) {
    store_bits(y, kNegativeMarker);
    _ErrorCall(arrays, LUX_DOMAIN, i, status);
  } else {
    double scaled;
    put(&scaled, load_extended(arrays.src1 + i) * kUp);  // exact
    root_element<kKind>(&scaled, y);
    add_to_upper_word(y, kDown<kKind>);
  }
}

#endif
