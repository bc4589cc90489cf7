// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays: what Pow and Powx share; they differ in where the exponent
// stands.
//
// A24, on the x87 unit at 53-bit precision:
//
//   x = 2^e m, 1 <= m < 2, i = round(256 (m - 1)), z = m R[i] - 1 exactly, |z| <= 2^-9,
//   log2 x = z Q(z) + log2(1/R[i]) + e,  t = y log2 x,
//   k = round(256 t), r = t - k/256, 2^t = 2^floor(k/256) T[k mod 256] ((r + D1) r + D0).
//
//   R[0] = 1 and R[256] = 1/2, so that nothing cancels next to 1 and the logarithm keeps its
//   relative error, 3.7e-13 by Q. At |t| <= 150 that is 4e-11 of the power; the quadratic adds
//   1.1e-10, and 2^-33 is 0.002 ulp. Powers of two come out exact.
//
// A21, packed single precision:
//
//   x = 2^e m, sqrt(1/2) <= m < sqrt(2), s = (m - 1)/(m + 1) = sh + sl, sh of 12 bits,
//   log2 x = (e + Ch sh) + (Ch sl + s (Cl + s^2 L(s^2))), the first sum exact in two singles;
//   its leading 12 bits times the exponent's leading 12 bits are exact, the other parts small.
//   2^t by a polynomial of degree six, |r| <= 0.501.
//
//   The logarithm's relative error is below 2^-29, t's below 2^-22 at |t| < 125, and the
//   polynomial's roundings are about 2^-23: below 2^-21 together.
//
// A11, packed: the same in plain single precision with shorter polynomials; the logarithm's
// relative error of 2^-21 becomes 2^-14.5 in t, the polynomial adds 2^-17.
//
//   ordinary elements   blocks of eight: |x| a normal number, |y| < 2^31, |t| < 126; packed
//                       |t| < 125, since an error of t must not lift a subnormal result. A larger y
//                       only lets |x| = 1 through, and its products overflow. Signs of negative
//                       bases with whole exponents are put on the stored results.
//   others              in every grade by the doubles of A24, for all of a block together, and where
//                       their error leaves the nearest single open by pow_extended.h
//
// Worst errors found: A24 0.5017 ulp at (0x3E6D0512, 0x41270251); relative A21 2^-22.0, A11 2^-15.0
// (sampled).
#ifndef LUX_KERNELS_EXPLOG_POW_32F_H
#define LUX_KERNELS_EXPLOG_POW_32F_H

#include "kernels/explog/pow_32f_step.h"
#include "kernels/explog/pow_extended.h"
#include "kernels/explog/pow_special.h"

constexpr int32_t kBlock = 8;
// Of an exponent, in the sign bit: too large, or a NaN.
static inline uint32_t too_large(const float* y) { return kLargeExponent - 1 - upper_magnitude(y); }

// Upper words of bounds of |t|.
constexpr uint32_t kNormalResults = 0x405F8000;  // 126
constexpr uint32_t kPackedResults = 0x405F6000;  // 125.5, above any that the packed steps take
constexpr uint32_t kSurelyBeyond = 0x40640000;   // 160

// ---- x87

// Of m times 2^(exponent field of `bits` - 127); m and `bits` have one fraction.
static inline double log2_of(float m, uint32_t bits) {
  const auto& table = static_const_table;
  const auto& cell = table.cell[((bits & Format<float>::kFraction) + 0x4000) >> 15];
  const double z = m * cell.reciprocal - 1.0f;
  return (((table.q[3] * z + table.q[2]) * z + table.q[1]) * z + table.q[0]) * z +
         (cell.log2 + table.exponent[bits >> 23]);
}

struct Power {
  double value;  // to be multiplied by 2^floor(k/256)
  int32_t k;
};

static inline Power exp2_of(double t) {
  const auto& table = static_const_table;
  double grid;
  const double u = t + table.shifter;
  put_copy(&grid, u);
  const int32_t k = int32_t(load_words(&grid).lower);
  const double r = t - (u - table.shifter);
  return {((r + table.d1) * r + table.d0) * table.power[k & 255], k};
}

// Powers of magnitudes.
template <int kCount>
struct Powers {
  double t[kCount];
  uint32_t plain[kCount];    // by the table alone, where |t| < 126
  uint32_t nearest[kCount];  // infinity and zero included
};

// For pow_special.
struct KnownPower {
  uint32_t power;
  uint32_t operator()(const float*, const float*) const { return power; }
};

// The nearest single where the doubles leave it open.
static uint32_t extended_nearest(const float* x, const float* y) {
  double base, exponent;
  put(&base, load_extended(x));  // a copy of a subnormal single would trap where underflow does
  put(&exponent, load_extended(y));
  const X87Nearest<X87_EXTENDED> control;
  const float power = store_f32(float(extended_pow(&base, &exponent)));
  control.leave();
  return load_bits(&power);
}

// Where an operand is a NaN, infinite or a base 0, 1 takes its place, and where the power has no real
// value: what comes out for such an element means nothing, and no flag is raised for it.
template <int kCount, class Exponent>
__attribute__((noinline)) static void finite_powers(const float* x, Exponent y, int32_t i,
                                                    Powers<kCount>* powers) {
  constexpr uint32_t kInf = Format<float>::kInf, kOne = Format<float>::kOne;
  constexpr float kError = 0x1p-32f;  // of a power with |t| <= 160
  float base[kCount], exponent[kCount], above[kCount], below[kCount];
  for (int lane = 0; lane < kCount; ++lane) {
    const float* const y_lane = y.at(i + lane);
    const uint32_t word = upper_word(x + i + lane), a = word & ~kSignUpper;
    const bool real = whole(y_lane).is | !sign_bit(word);
    const bool finite = real & (a - 1 < kInf - 1) & (upper_magnitude(y_lane) < kInf);
    store_bits(base + lane, finite ? a : kOne);
    store_bits(exponent + lane, finite ? load_bits(y_lane) : kOne);
  }
  for (int lane = 0; lane < kCount; ++lane) {
    float normal, m;
    double lifted = 0;
    store_bits(&normal, load_bits(base + lane));
    if (load_bits(base + lane) < Format<float>::kSmallestNormal) {
      put(&normal, load_extended(base + lane) * 0x1p+24f);
      lifted = 24;
    }
    const uint32_t bits = load_bits(&normal);
    store_bits(&m, (bits & Format<float>::kFraction) | kOne);
    powers->t[lane] = (log2_of(m, bits) - lifted) * exponent[lane];
  }
  for (double& t : powers->t)
    if (!all_below<1>(&t, kSurelyBeyond)) t = sign_bit(upper_word(&t)) ? -160 : 160;
  for (int lane = 0; lane < kCount; ++lane) {
    const Power power = exp2_of(powers->t[lane]);
    const int32_t n = power.k >> 8;
    float some, others;
    store_bits(&some, uint32_t((n >> 1) + 127) << 23);
    store_bits(&others, uint32_t(n - (n >> 1) + 127) << 23);
    const float plain = store_f32(float(power.value));
    powers->plain[lane] = load_bits(&plain) + (uint32_t(n) << 23);
    const double value = power.value * some * others;
    above[lane] = float(value + value * kError);
    below[lane] = float(value - value * kError);
  }
  for (int lane = 0; lane < kCount; ++lane) {
    const uint32_t nearest = load_bits(above + lane);
    powers->nearest[lane] = nearest == load_bits(below + lane)
                                ? nearest
                                : extended_nearest(base + lane, exponent + lane);
  }
}

// Eight or one whose results are normal numbers. Stores nothing otherwise.
template <int kCount, class Exponent>
static inline bool x87_ordinary(const float* x, Exponent y, float* dst, int32_t i,
                                const uint32_t* sign) {
  alignas(16) float m[kBlock];
  double t[kCount];
  for (int lane = 0; lane < kCount; lane += 4)
    _mm_store_ps(m + lane,
                 significand_of(kCount == 1 ? load_lane(x + i) : load_lanes(x + i + lane)));
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane)
    t[lane] = log2_of(m[lane], upper_magnitude(x + i + lane)) * in_memory(y.at(i + lane));
  if (!all_below<kCount>(t, kNormalResults)) return false;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) {
    const Power power = exp2_of(t[lane]);
    const float value = store_f32(float(power.value));
    store_bits(dst + i + lane, load_bits(&value) + (uint32_t(power.k >> 8) << 23) + sign[lane]);
  }
  return true;
}

// The step for one element. ordinary(i, t, plain) stores one that is computed as in a block, perhaps
// with what is known of it; a block that has others is computed once more at its first element,
// before any is stored.
template <class Exponent, class Ordinary>
struct OneElement {
  const Arrays<float>& arrays;
  Exponent y;
  int32_t whole;  // elements of whole blocks
  Powers<kBlock>* block;
  Ordinary ordinary;

  void operator()(int32_t i, Status* status) {
    const int lane = i % kBlock;
    const bool in_block = i < whole;
    if (in_block && lane == 0) finite_powers(arrays.src1, y, i, block);
    if (ordinary(i, in_block ? block->t + lane : nullptr, block->plain + lane)) return;
    Powers<1> alone;
    if (!in_block) finite_powers(arrays.src1, y, i, &alone);
    const uint32_t power = in_block ? block->nearest[lane] : alone.nearest[0];
    pow_special(arrays, y.at(i), i, status, KnownPower{power});
  }
};

template <class Exponent, class Ordinary>
static inline OneElement<Exponent, Ordinary> one_element(const Arrays<float>& arrays, Exponent y,
                                                         int32_t len, Powers<kBlock>* block,
                                                         Ordinary ordinary) {
  return {arrays, y, len - len % kBlock, block, ordinary};
}

// Whole blocks of ordinary elements.
template <class Exponent>
static inline int32_t x87_blocks(const float* x, Exponent y, float* dst, int32_t i, int32_t last) {
  uint32_t own[kBlock];
  for (; i < last; i += kBlock) {
    const uint32_t* const sign = signs_in_domain<kBlock, too_large>(x, y, i, own);
    if (!sign || !x87_ordinary<kBlock>(x, y, dst, i, sign)) break;
  }
  return i;
}

template <class Exponent>
static Status pow_x87(const Arrays<float>& arrays, Exponent y, int32_t len) {
  const float* const x = arrays.src1;
  float* const dst = arrays.dst1;
  Powers<kBlock> block;
  return run_kernel<X87Nearest<X87_DOUBLE>, kBlock>(
      arrays, len, [=](int32_t i, int32_t last) { return x87_blocks(x, y, dst, i, last); },
      one_element(arrays, y, len, &block, [=](int32_t i, const double* t, const uint32_t* plain) {
        uint32_t own;
        const uint32_t* const sign = signs_in_domain<1, too_large>(x, y, i, &own);
        if (!sign) return false;
        if (!t) return x87_ordinary<1>(x, y, dst, i, sign);
        if (!all_below<1>(t, kNormalResults)) return false;
        store_bits(dst + i, *plain + *sign);
        return true;
      }));
}

// ---- Packed

static inline __m128 four_exponents(EachExponent<float> y, int32_t i) {
  return load_lanes(y.y + i);
}
static inline __m128 four_exponents(OneExponent<float> y, int32_t) { return load_all_lanes(y.y); }

// A block of bases whose magnitudes are normal numbers. Stores nothing if a power is not ordinary.
template <class Grade, bool kSigned, class Exponent>
static inline bool packed_block(const float* x, Exponent y, float* dst, int32_t i) {
  const __m128 x_a = load_lanes(x + i), x_b = load_lanes(x + i + 4);
  const __m128 y_a = four_exponents(y, i), y_b = four_exponents(y, i + 4);
  __m128 sign_a, sign_b;
  if constexpr (kSigned)
    if (!packed_signs(x_a, y_a, &sign_a) || !packed_signs(x_b, y_b, &sign_b)) return false;
  const Split a = packed_product<Grade>(x_a, y_a), b = packed_product<Grade>(x_b, y_b);
  if (!in_range(a.whole) || !in_range(b.whole)) return false;
  const __m128 first = power<Grade>(a), second = power<Grade>(b);
  store_lanes(dst + i, kSigned ? _mm_or_ps(first, sign_a) : first);
  store_lanes(dst + i + 4, kSigned ? _mm_or_ps(second, sign_b) : second);
  return true;
}

template <class Grade, class Exponent>
__attribute__((noinline)) static bool packed_with_negatives(const float* x, Exponent y, float* dst,
                                                            int32_t i) {
  return !sign_bit(any_not_normal<kBlock>(x + i)) && packed_block<Grade, true>(x, y, dst, i);
}

template <class Grade, class Exponent>
static inline int32_t packed_blocks(const float* x, Exponent y, float* dst, int32_t i,
                                    int32_t last) {
  for (; i < last; i += kBlock) {
    const uint32_t exponents = any_outside<kBlock, too_large>(y, i);
    const bool positive = !sign_bit(exponents | any_not_positive<kBlock>(x + i));
    if (positive ? !packed_block<Grade, false>(x, y, dst, i)
                 : sign_bit(exponents) || !packed_with_negatives<Grade>(x, y, dst, i))
      break;
  }
  _mm_empty();
  return i;
}

// An ordinary element comes out the same whatever stands beside it.
template <class Grade>
static inline bool packed_element(const float* x, const float* y, float* dst) {
  const __m128 bases = load_all_lanes(x), exponents = load_all_lanes(y);
  __m128 sign;
  if (!packed_signs(bases, exponents, &sign)) return false;
  const Split t = packed_product<Grade>(bases, exponents);
  const bool ordinary = in_range(t.whole);
  if (ordinary) store_lane(dst, _mm_or_ps(power<Grade>(t), sign));
  _mm_empty();
  return ordinary;
}

// Four numbers of a tail of n from the given one on, filled up with 1.
static inline __m128 load_tail(const float* from, int32_t first, int32_t n) {
  static const float kOne = 1;
  const auto lane = [=](int32_t i) { return load_lane(i < n ? from + i : &kOne); };
  return _mm_movelh_ps(_mm_unpacklo_ps(lane(first), lane(first + 1)),
                       _mm_unpacklo_ps(lane(first + 2), lane(first + 3)));
}

// From this length on a tail filled up to a block is quicker than its elements.
constexpr int32_t kLongTail = 4;

// False if one of n elements is not ordinary.
template <class Grade, class Exponent>
__attribute__((noinline)) static bool packed_tail(const float* x, Exponent y, int32_t n,
                                                  float* results) {
  alignas(16) float bases[kBlock], exponents[kBlock];
  for (int32_t lane = 0; lane < kBlock; lane += 4) {
    _mm_store_ps(bases + lane, load_tail(x, lane, n));
    if constexpr (__is_same(Exponent, EachExponent<float>))
      _mm_store_ps(exponents + lane, load_tail(y.y, lane, n));
  }
  if constexpr (__is_same(Exponent, EachExponent<float>)) y = {exponents};
  const bool ordinary = !sign_bit(any_outside<kBlock, too_large>(y, 0)) &&
                        packed_with_negatives<Grade>(bases, y, results, 0);
  _mm_empty();
  return ordinary;
}

template <class Grade, auto kStep, class Exponent>
static Status pow_packed(const Arrays<float>& arrays, Exponent y, int32_t len) {
  const float* const x = arrays.src1;
  float* const dst = arrays.dst1;
  const int32_t n = len % kBlock, whole = len - n;
  Powers<kBlock> block;
  float tail[kBlock];
  bool tail_is_known = false;
  return run_kernel<BothNearest<X87_DOUBLE>, kBlock>(
      arrays, len,
      with_wide_step<Unit::kSse, kStep>(
          arrays, len,
          [=](int32_t i, int32_t last) { return packed_blocks<Grade>(x, y, dst, i, last); }),
      one_element(arrays, y, len, &block, [&](int32_t i, const double* t, const uint32_t*) {
        if (n >= kLongTail && i >= whole) {
          if (i == whole) {
            Exponent from = y;
            if constexpr (__is_same(Exponent, EachExponent<float>)) from = {y.y + whole};
            tail_is_known = packed_tail<Grade>(x + whole, from, n, tail);
          }
          if (tail_is_known) {
            store_bits(dst + i, load_bits(tail + (i - whole)));
            return true;
          }
        }
        return !(t && !all_below<1>(t, kPackedResults)) &&
               !sign_bit(too_large(y.at(i)) | any_not_normal<1>(x + i)) &&
               packed_element<Grade>(x + i, y.at(i), dst + i);
      }));
}

#endif
