// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays, x^y = 2^(y log2 x): x = 2^k m, m from sqrt 1/2 to sqrt 2, log2
// x = k + s P(s^2), s = (m - 1) / (m + 1). P is off by 2^-45.0 at most, which results up to 2^126
// have as 2^-38.5, the power by 2^-39.7.
#include "kernels/wide_powers.h"

constexpr uint32_t kMargin = 3 << 14;  // 2^-37.4
constexpr uint32_t kLeast = Format<float>::kSmallestNormal, kInf = Format<float>::kInf;

static inline Doubles log2(Singles x) {
  const __m256i all = patterns_of(x), root = _mm256_set1_epi32(0x3F3504F3);  // sqrt 1/2
  const __m256i exponent =
      _mm256_sub_epi32(all, root) & _mm256_set1_epi32(int32_t(Format<float>::kSign | kInf));
  const Doubles m = as_doubles(_mm256_castsi256_ps(_mm256_sub_epi32(all, exponent)));
  const Doubles s = (m - 1) / (m + 1);
  const Doubles k = as_doubles(_mm256_srai_epi32(exponent, Format<float>::kFractionBits));
  return fused(s, fused_polynomial<kWideLog2>(s * s), k);
}

// Whether all powers are from 2^-126 to 2^126.
static inline bool all_normal(Doubles t) {
  const Singles upper =
      _mm256_shuffle_ps(_mm256_castpd_ps(t.low), _mm256_castpd_ps(t.high), _MM_SHUFFLE(3, 1, 3, 1));
  return all_below(upper, 0x405F8000);  // of 126
}

template <class Exponent>
static inline int32_t powers(const Arrays<float>& arrays, int32_t i, int32_t last,
                             Exponent exponent) {
  for (; i + kLanes <= last; i += kLanes) {
    const Singles x = load_lanes(arrays.src1 + i), y = exponent(i);
    if (__builtin_expect(!all_from<kLeast, kInf>(x) || !all_below(y, kInf), 0)) break;
    const Doubles t = log2(x) * as_doubles(y);
    if (__builtin_expect(!all_normal(t), 0)) break;
    const Doubles power = exp2(split(t));
    if (__builtin_expect(!all_decided<kMargin>(power), 0)) break;
    store_lanes(arrays.dst1 + i, rounded(power));
  }
  return i;
}

LUX_WIDE_KERNEL(Pow, 32f, A24) {
  return powers(arrays, first, last, [&](int32_t i) { return load_lanes(arrays.src2 + i); });
}

// As if from memory each time: a conversion before the loop would raise flags although there may be
// no ordinary block.
LUX_WIDE_KERNEL(Powx, 32f, A24) {
  return powers(arrays, first, last, [&](int32_t) {
    Singles y = all_lanes(in_memory(arrays.src2));
    asm volatile("" : "+x"(y));
    return y;
  });
}
