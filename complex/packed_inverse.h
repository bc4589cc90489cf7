// SPDX-License-Identifier: MIT
//
// The lower grades of the inverse functions, four elements packed, z = x + iy, x, y > 0:
//
//   atanh z   atanh(2x / (1 + x^2 + y^2)) / 2 + i/2 angle of ((1-x)(1+x) - y^2, 2y)
//   asin z    u + iv: q = |z|^2 - 1 = sinh^2 v - cos^2 u, m = |q + 2iy| = sinh^2 v + cos^2 u, and
//             sinh v cos u = y, so that one of the two is the root of (m + |q|)/2, the other y over
//             this; cosh v = sqrt(1 + sinh^2 v), sin u = x / cosh v, tanh v = sinh v / cosh v
//   atanh s   a polynomial up to 1/3; beyond, log(1 + w)/2, w = 2s / (1 - s)
//
// q = (x - 1)(x + 1) + y^2 alone may cancel. It does so where y <= 1, and is off by a few units of
// y^2 then, which hardly counts beside m >= 2y.
#ifndef LUX_COMPLEX_PACKED_INVERSE_H
#define LUX_COMPLEX_PACKED_INVERSE_H

#include "complex/inverse_passes.h"
#include "complex/packed.h"

static inline __m128 packed_atanh(__m128 s, __m128 w) {
  const __m128 sum = 1.0f + w;
  const PackedPlace place = packed_place(sum);
  const __m128 f = (place.m - 1.0f) + (w - (sum - 1.0f)) * (place.m / sum);
  const __m128 near = _mm_cmple_ps(s, all_lanes(1 / 3.0f));
  const __m128 e = _mm_andnot_ps(near, place.e), t = select(near, s, f / (2.0f + f));
  const __m128 counted = _mm_max_ps(magnitude_of(t), all_lanes(0x1p-20f));
  return e * (0.5f * kLn2[0]) +
         (with_tail<kLongAtanhTail>(t, counted * counted) + e * (0.5f * kLn2[1]));
}

// atan takes the parts exchanged and gives them so.
template <bool kTurned, class Steps>
struct PackedAtanhSteps : Steps {
  static constexpr Bounds kRe = kPackedPart, kIm = kPackedPart;

  static int compute(PackedComplex* z) {
    const __m128 re = kTurned ? z->im : z->re, im = kTurned ? z->re : z->im;
    const __m128 x = magnitude_of(re), left = 1.0f - x, yy = im * im;
    const __m128 size =
        packed_atanh(2.0f * x / ((1.0f + x * x) + yy), 4.0f * x / (left * left + yy));
    const __m128 part = _mm_or_ps(0.5f * size, sign_of(re));
    const __m128 turn = 0.5f * packed_angle({left * (1.0f + x) - yy, 2.0f * im});
    *z = kTurned ? PackedComplex{turn, part} : PackedComplex{part, turn};
    return 0;
  }
};

struct PackedArc {
  __m128 sine, cosine;  // cosh v times those of u
  __m128 v;
};

static inline PackedArc packed_arc(__m128 x, __m128 y) {
  const __m128 q = (x - 1.0f) * (x + 1.0f) + y * y, twice = y + y;
  const __m128 m = _mm_sqrt_ps(q * q + twice * twice);
  const __m128 root = _mm_sqrt_ps(0.5f * (m + magnitude_of(q))), other = y / root;
  const __m128 inside = _mm_cmplt_ps(q, _mm_setzero_ps());
  const __m128 sinh = select(inside, other, root);
  const __m128 cosh = _mm_sqrt_ps(1.0f + sinh * sinh);
  const __m128 v = packed_atanh(sinh / cosh, 2.0f * sinh * (sinh + cosh));
  return {x, cosh * select(inside, root, other), v};
}

// kTurned: asinh, which takes the parts exchanged and gives them so.
template <bool kTurned, class Steps>
struct PackedAsinSteps : Steps {
  static constexpr Bounds kRe = kPackedPart, kIm = kPackedPart;

  static int compute(PackedComplex* z) {
    const __m128 re = kTurned ? z->im : z->re, im = kTurned ? z->re : z->im;
    const PackedArc arc = packed_arc(magnitude_of(re), magnitude_of(im));
    const __m128 u = packed_angle({arc.cosine, _mm_or_ps(arc.sine, sign_of(re))});
    const __m128 v = _mm_or_ps(arc.v, sign_of(im));
    *z = kTurned ? PackedComplex{v, u} : PackedComplex{u, v};
    return 0;
  }
};

template <bool kHyperbolic, class Steps>
struct PackedAcosSteps : Steps {
  static constexpr Bounds kRe = kPackedPart, kIm = kPackedPart;

  static int compute(PackedComplex* z) {
    const PackedArc arc = packed_arc(magnitude_of(z->re), magnitude_of(z->im));
    const __m128 u = packed_angle({_mm_or_ps(arc.sine, sign_of(z->re)), arc.cosine});
    const __m128 sign = sign_of(z->im);
    *z = kHyperbolic ? PackedComplex{arc.v, _mm_or_ps(u, sign)}
                     : PackedComplex{u, _mm_or_ps(arc.v, sign_of(-z->im))};
    return 0;
  }
};

using PackedAtan = PackedAtanhSteps<true, AtanSteps>;
using PackedAtanh = PackedAtanhSteps<false, AtanhSteps>;
using PackedAsin = PackedAsinSteps<false, AsinSteps>;
using PackedAsinh = PackedAsinSteps<true, AsinhSteps>;
using PackedAcos = PackedAcosSteps<false, AcosSteps>;
using PackedAcosh = PackedAcosSteps<true, AcoshSteps>;

#endif
