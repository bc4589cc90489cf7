// SPDX-License-Identifier: MIT
//
// Powers of single-precision arrays: what Pow and Powx share; they differ in where the exponent
// stands.
//
// A24, correctly rounded, on the x87 unit at 53-bit precision:
//
//   x = 2^e m, 1 <= m < 2, i = round(512 (m - 1)), z = m R[i] - 1 exactly, |z| <= 2^-10,
//   log2 x = z Q(z) - log2 R[i] + e,  t = y log2 x,
//   k = round(512 t), r = t - k/512, 2^t = 2^floor(k/512) T[k mod 512] ((r + D1) r + D0).
//
//   R[0] = 1, and from sqrt(2) on, cell 212, the table has log2 R + 1 with an exponent of one more,
//   so that nothing cancels next to 1 and the logarithm keeps its relative error: 2.28e-14 by Q and
//   four roundings, 2.35e-14. At |t| <= 160 that is 2.6e-12 of the power, t's rounding 1.3e-14; the
//   quadratic adds 1.294e-11, the last products 4e-16: 1.56e-11 together. kMargin allows 1.68e-11,
//   so that one power of 1771 is undecided and goes to nearest_power.cpp. Powers of two come out
//   exact.
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
//   ordinary elements   blocks of eight: x finite and not 0, |y| < 2^31, |t| < 126; packed
//                       |t| < 125, since an error of t must not lift a subnormal result. A larger y
//                       only lets |x| = 1 through, and its products overflow. Subnormal bases are
//                       multiplied by 2^24, which is taken from e again. Signs of negative bases with
//                       whole exponents are put on the stored results.
//   others              in every grade the nearest single, by the doubles of A24 for all of a block
//                       together
//
// Worst errors found, relative: A21 2^-22.0, A11 2^-15.0 (sampled).
#ifndef LUX_KERNELS_EXPLOG_POW_32F_H
#define LUX_KERNELS_EXPLOG_POW_32F_H

#include "kernels/nearest_32f.h"
#include "kernels/explog/nearest_power.h"
#include "kernels/explog/pow_32f_step.h"
#include "kernels/explog/pow_special.h"

constexpr int32_t kBlock = 8;

// Of an exponent, in the sign bit: too large, or a NaN.
static inline uint32_t too_large(const float* y) { return kLargeExponent - 1 - upper_magnitude(y); }

// ---- Screening

// Of magnitudes less their fractions: zero, powers of two and infinity raise no flag where they are
// compared, and depend on no setting.
static inline __m128 exponents_of(__m128 x) {
  return _mm_and_ps(x, all_lanes(Format<float>::kInf));
}

// Of eight.
struct Magnitudes {
  __m128 least, largest;
};

static inline Magnitudes magnitudes_of(__m128 a, __m128 b) {
  const __m128 first = exponents_of(a), second = exponents_of(b);
  return {_mm_min_ps(first, second), _mm_max_ps(first, second)};
}

// Whether no exponent is too large or a NaN.
static inline bool none_too_large(EachExponent<float> y, int32_t i) {
  const Magnitudes sizes = magnitudes_of(load_lanes(y.y + i), load_lanes(y.y + i + 4));
  return in_all_lanes(_mm_cmplt_ps(sizes.largest, all_lanes(kLargeExponent)));
}
static inline bool none_too_large(OneExponent<float> y, int32_t) {
  return sign_bit(~too_large(y.y));
}

static inline __m128 four_exponents(EachExponent<float> y, int32_t i) {
  return load_lanes(y.y + i);
}
static inline __m128 four_exponents(OneExponent<float> y, int32_t) { return load_all_lanes(y.y); }

// Four bases as normal numbers, and by how many powers of two each was lifted to one.
struct Lifted {
  __m128 x, powers;
};

// Four finite numbers other than 0, the subnormal ones lifted on the x87 unit, which knows no
// denormals-are-zero.
static inline Lifted lifted(const float* four) {
  const __m128 subnormal = _mm_cmpeq_ps(exponents_of(load_lanes(four)), _mm_setzero_ps());
  alignas(16) float factor[4];
  float normal[4];
  _mm_store_ps(factor, select(subnormal, all_lanes(0x1p+24f), all_lanes(1.0f)));
  for (int lane = 0; lane < 4; ++lane)
    put(normal + lane, load_extended(four + lane) * factor[lane]);
  // Of four stores a load as a whole would wait for the last.
  const __m128 low = _mm_unpacklo_ps(load_lane(normal), load_lane(normal + 1));
  const __m128 high = _mm_unpacklo_ps(load_lane(normal + 2), load_lane(normal + 3));
  return {_mm_movelh_ps(low, high), _mm_and_ps(subnormal, all_lanes(24.0f))};
}

static inline uint32_t zero_or_not_finite(const float* x) {
  return outside(upper_magnitude(x), 1, Format<float>::kInf);
}

// Of eight.
static inline bool none_zero_or_not_finite(const float* x) {
  return none_outside<kBlock>([=](int lane) { return zero_or_not_finite(x + lane); });
}

// Upper words of bounds of |t|.
constexpr uint32_t kNormalResults = 0x405F8000;  // 126
constexpr uint32_t kPackedResults = 0x405F6000;  // 125.5, above any that the packed steps take
constexpr uint32_t kSurelyBeyond = 0x40640000;   // 160

// ---- x87

// In a power's last places as a double, of which it has at most 2^53.
constexpr uint32_t kMargin = 0x25000;

// Of m times 2^(exponent field of `bits` - 127); m and `bits` have one fraction.
static inline double log2_of(float m, uint32_t bits) {
  const auto& table = static_const_table;
  constexpr uint32_t kHalfCell = 0x2000, kUp = 0x800000 - ((kHalvedCell << 14) - kHalfCell);
  const auto& cell = table.cell[((bits & Format<float>::kFraction) + kHalfCell) >> 14];
  const double z = m * cell.reciprocal - 1.0f;
  return (((table.q[3] * z + table.q[2]) * z + table.q[1]) * z + table.q[0]) * z +
         (cell.log2 + table.exponent[(bits + kUp) >> 23]);
}

struct Power {
  double value;  // to be multiplied by 2^floor(k/512)
  int32_t k;
};

static inline Power exp2_of(double t) {
  const auto& table = static_const_table;
  double grid;
  const double u = t + table.shifter;
  put_copy(&grid, u);
  const int32_t k = int32_t(load_words(&grid).lower);
  const double r = t - (u - table.shifter);
  return {((r + table.d1) * r + table.d0) * table.power[k & 511], k};
}

// Powers of magnitudes.
template <int kCount>
struct Powers {
  double t[kCount];
  uint32_t nearest[kCount];  // infinity and zero included
};

// For pow_special.
struct KnownPower {
  uint32_t power;
  uint32_t operator()(const float*, const float*) const { return power; }
};

// Where an operand is a NaN, infinite or a base 0, 1 takes its place, and where the power has no real
// value: what comes out for such an element means nothing, and no flag is raised for it.
template <int kCount, class Exponent>
__attribute__((noinline)) static void finite_powers(const float* x, Exponent y, int32_t i,
                                                    Powers<kCount>* powers) {
  constexpr uint32_t kInf = Format<float>::kInf, kOne = Format<float>::kOne;
  constexpr float kError = kMargin * 0x1p-53f;
  float base[kCount], exponent[kCount], above[kCount], below[kCount];
  double value[kCount];
  bool any_finite = false;
  for (int lane = 0; lane < kCount; ++lane) {
    const float* const y_lane = y.at(i + lane);
    const uint32_t word = upper_word(x + i + lane), a = word & ~kSignUpper;
    const bool real = whole(y_lane).is | !sign_bit(word);
    const bool finite = real & (a - 1 < kInf - 1) & (upper_magnitude(y_lane) < kInf);
    any_finite |= finite;
    store_bits(base + lane, finite ? a : kOne);
    store_bits(exponent + lane, finite ? load_bits(y_lane) : kOne);
  }
  if (!any_finite) {
    for (double& t : powers->t) t = 0;
    return;
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
  for (int lane = 0; lane < kCount; ++lane) {
    double& t = powers->t[lane];
    if (!all_below<1>(&t, kSurelyBeyond)) {
      const bool vanishes = sign_bit(upper_word(&t));
      store_bits(above + lane, vanishes ? 0 : kInf);
      store_bits(below + lane, vanishes ? 0 : kInf);
      continue;
    }
    const Power power = exp2_of(t);
    const int32_t n = power.k >> 9;
    float some, others;
    store_bits(&some, uint32_t((n >> 1) + 127) << 23);
    store_bits(&others, uint32_t(n - (n >> 1) + 127) << 23);
    value[lane] = power.value * some * others;
    above[lane] = float(value[lane] + value[lane] * kError);
    below[lane] = float(value[lane] - value[lane] * kError);
  }
  for (int lane = 0; lane < kCount; ++lane) {
    const uint32_t nearest = load_bits(above + lane);
    powers->nearest[lane] = nearest == load_bits(below + lane)
                                ? nearest
                                : noxs_nearest_power(base + lane, exponent + lane, value[lane]);
  }
}

// Powers in [1, 2), rounded, and what is to be added to their patterns.
struct Rounded {
  float value;
  uint32_t addend;
};

template <uint32_t kMargin, int kCount, class Exponent>
__attribute__((noinline, cold)) static void settle(const float* x, Exponent y, int32_t i,
                                                   const uint32_t* sign,
                                                   const double (&value)[kCount],
                                                   Rounded (&rounded)[kCount]) {
  for (int lane = 0; lane < kCount; ++lane) {
    if (!is_undecided<kMargin>(value + lane)) continue;
    double about = value[lane];
    add_to_upper_word(&about, uint32_t(int32_t(rounded[lane].addend - sign[lane]) >> 3));
    store_bits(&rounded[lane].value, noxs_nearest_power(x + i + lane, y.at(i + lane), about));
    rounded[lane].addend = sign[lane];
  }
}

// Eight bases as normal numbers, and the powers of two that each was lifted by.
struct Eight {
  alignas(16) float x[kBlock], powers[kBlock];
};

// Eight or one whose results are normal numbers; with `lifted` in place of bases of which some are
// subnormal. Stores nothing otherwise.
template <int kCount, bool kLifted, class Exponent>
static inline bool x87_ordinary(const float* x, Exponent y, float* dst, int32_t i,
                                const uint32_t* sign, const Eight* lifted) {
  const float* const base = kLifted ? lifted->x : x + i;
  alignas(16) float m[kBlock];
  double t[kCount], value[kCount];
  Rounded rounded[kCount];
  for (int lane = 0; lane < kCount; lane += 4)
    _mm_store_ps(m + lane, significand_of(kCount == 1 ? load_lane(base) : load_lanes(base + lane)));
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane)
    t[lane] =
        (log2_of(m[lane], upper_magnitude(base + lane)) - (kLifted ? lifted->powers[lane] : 0)) *
        in_memory(y.at(i + lane));
  if (!all_below<kCount>(t, kNormalResults)) return false;
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane) {
    const Power power = exp2_of(t[lane]);
    put_copy(value + lane, power.value);
    put(&rounded[lane].value, power.value);
    rounded[lane].addend = (uint32_t(power.k >> 9) << 23) + sign[lane];
  }
  if (any_undecided_lane<kMargin>(value)) settle<kMargin>(x, y, i, sign, value, rounded);
#pragma GCC unroll 8
  for (int lane = 0; lane < kCount; ++lane)
    store_bits(dst + i + lane, load_bits(&rounded[lane].value) + rounded[lane].addend);
  return true;
}

// The step for one element. ordinary(i, t, nearest) stores one that is computed as in a block, perhaps
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
    if (ordinary(i, in_block ? block->t + lane : nullptr, block->nearest + lane)) return;
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

// Of eight; null where one of a negative base may have no real value.
template <class Exponent>
__attribute__((noinline)) static const uint32_t* signs_of_eight(__m128 first, __m128 second,
                                                                Exponent y, int32_t i,
                                                                uint32_t* own) {
  __m128 sign_a, sign_b;
  if (!packed_signs(first, four_exponents(y, i), &sign_a) ||
      !packed_signs(second, four_exponents(y, i + 4), &sign_b))
    return nullptr;
  store_lanes(reinterpret_cast<float*>(own), sign_a);
  store_lanes(reinterpret_cast<float*>(own + 4), sign_b);
  return own;
}

template <class Exponent>
__attribute__((noinline)) static bool x87_with_subnormals(const float* x, Exponent y, float* dst,
                                                          int32_t i, const uint32_t* sign) {
  if (!none_zero_or_not_finite(x + i)) return false;
  Eight bases;
  for (int lane = 0; lane < kBlock; lane += 4) {
    const Lifted four = lifted(x + i + lane);
    _mm_store_ps(bases.x + lane, four.x);
    _mm_store_ps(bases.powers + lane, four.powers);
  }
  return x87_ordinary<kBlock, true>(x, y, dst, i, sign, &bases);
}

// Whole blocks of ordinary elements.
template <class Exponent>
static inline int32_t x87_blocks(const float* x, Exponent y, float* dst, int32_t i, int32_t last) {
  uint32_t own[kBlock];
  for (; i < last; i += kBlock) {
    const __m128 first = load_lanes(x + i), second = load_lanes(x + i + 4);
    const Magnitudes sizes = magnitudes_of(first, second);
    const bool finite = in_all_lanes(_mm_cmplt_ps(sizes.largest, all_lanes(Format<float>::kInf)));
    if (!finite || !none_too_large(y, i)) break;
    const uint32_t* sign = kNoSigns;
    if (_mm_movemask_ps(_mm_or_ps(first, second)) != 0)
      sign = signs_of_eight(first, second, y, i, own);
    if (!sign) break;
    const bool normal = in_all_lanes(_mm_cmplt_ps(_mm_setzero_ps(), sizes.least));
    if (!(__builtin_expect(normal, 1) ? x87_ordinary<kBlock, false>(x, y, dst, i, sign, nullptr)
                                      : x87_with_subnormals(x, y, dst, i, sign)))
      break;
  }
  return i;
}

template <auto kStep, class Exponent>
static Status pow_x87(const Arrays<float>& arrays, Exponent y, int32_t len) {
  const float* const x = arrays.src1;
  float* const dst = arrays.dst1;
  Powers<kBlock> block;
  return run_kernel<X87Nearest<X87_DOUBLE>, kBlock>(
      arrays, len,
      with_wide_step<Unit::kX87, kStep, true>(
          arrays, len, [=](int32_t i, int32_t last) { return x87_blocks(x, y, dst, i, last); }),
      one_element(arrays, y, len, &block, [=](int32_t i, const double* t, const uint32_t* nearest) {
        uint32_t own;
        const uint32_t* const sign = signs_in_domain<1, too_large>(x, y, i, &own);
        if (!sign) return false;
        if (!t) return x87_ordinary<1, false>(x, y, dst, i, sign, nullptr);
        if (!all_below<1>(t, kNormalResults)) return false;
        store_bits(dst + i, *nearest + *sign);
        return true;
      }));
}

// ---- Packed

template <class Grade>
static inline Split packed_product(const Lifted& base, __m128 y) {
  const Base reduced = reduce(base.x);
  return Grade::product({reduced.e - base.powers, reduced.z}, zero_if_tiny(y));
}

static inline __m128 signs_among(__m128 x) { return x; }
static inline __m128 signs_among(const Lifted& base) { return base.x; }

// Stores nothing if a power is not ordinary.
template <class Grade, bool kSigned, class Bases, class Exponent>
static inline bool packed_block(const Bases& x_a, const Bases& x_b, Exponent y, float* dst,
                                int32_t i) {
  const __m128 y_a = four_exponents(y, i), y_b = four_exponents(y, i + 4);
  __m128 sign_a, sign_b;
  if constexpr (kSigned)
    if (!packed_signs(signs_among(x_a), y_a, &sign_a) ||
        !packed_signs(signs_among(x_b), y_b, &sign_b))
      return false;
  const Split a = packed_product<Grade>(x_a, y_a), b = packed_product<Grade>(x_b, y_b);
  if (!in_range(a.whole) || !in_range(b.whole)) return false;
  const __m128 first = power<Grade>(a), second = power<Grade>(b);
  store_lanes(dst + i, kSigned ? _mm_or_ps(first, sign_a) : first);
  store_lanes(dst + i + 4, kSigned ? _mm_or_ps(second, sign_b) : second);
  return true;
}

template <class Grade, class Exponent>
__attribute__((noinline)) static bool packed_with_subnormals(const float* x, Exponent y, float* dst,
                                                             int32_t i) {
  if (!none_zero_or_not_finite(x + i)) return false;
  _mm_empty();
  const Lifted first = lifted(x + i), second = lifted(x + i + 4);
  return packed_block<Grade, true>(first, second, y, dst, i);
}

template <class Grade, class Exponent>
__attribute__((noinline)) static bool packed_with_negatives(const float* x, Exponent y, float* dst,
                                                            int32_t i) {
  return packed_block<Grade, true>(load_lanes(x + i), load_lanes(x + i + 4), y, dst, i);
}

// kRare: without a copy of the steps for positive bases.
template <class Grade, bool kRare, class Exponent>
static inline bool packed_or_none(const float* x, Exponent y, float* dst, int32_t i) {
  const __m128 zero = _mm_setzero_ps(), first = load_lanes(x + i), second = load_lanes(x + i + 4);
  const Magnitudes sizes = magnitudes_of(first, second);
  if (!none_too_large(y, i) ||
      !in_all_lanes(_mm_cmplt_ps(sizes.largest, all_lanes(Format<float>::kInf))))
    return false;
  if (!in_all_lanes(_mm_cmplt_ps(zero, sizes.least)))
    return packed_with_subnormals<Grade>(x, y, dst, i);
  if (kRare || _mm_movemask_ps(_mm_or_ps(first, second)) != 0)
    return packed_with_negatives<Grade>(x, y, dst, i);
  return packed_block<Grade, false>(first, second, y, dst, i);
}

template <class Grade, class Exponent>
static inline int32_t packed_blocks(const float* x, Exponent y, float* dst, int32_t i,
                                    int32_t last) {
  // Beside the packed steps integer instructions cost nothing, as long as there are few of them.
  constexpr bool kByIntegers = __is_same(Exponent, OneExponent<float>);
  for (; i < last; i += kBlock) {
    if (kByIntegers &&
        !sign_bit(any_outside<kBlock, too_large>(y, i) | any_not_positive<kBlock>(x + i))) {
      if (!packed_block<Grade, false>(load_lanes(x + i), load_lanes(x + i + 4), y, dst, i)) break;
    } else if (!packed_or_none<Grade, kByIntegers>(x, y, dst, i)) {
      break;
    }
  }
  _mm_empty();
  return i;
}

// An ordinary element comes out the same whatever stands beside it.
template <class Grade>
static inline bool packed_element(const float* x, const float* y, float* dst) {
  const __m128 exponents = load_all_lanes(y);
  Lifted bases = {load_all_lanes(x), _mm_setzero_ps()};
  if (upper_magnitude(x) < Format<float>::kSmallestNormal) {
    float normal;
    put(&normal, load_extended(x) * 0x1p+24f);
    bases = {load_all_lanes(&normal), all_lanes(24.0f)};
  }
  __m128 sign;
  if (!packed_signs(bases.x, exponents, &sign)) return false;
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
  const bool ordinary = packed_or_none<Grade, true>(bases, y, results, 0);
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
               !sign_bit(too_large(y.at(i)) | zero_or_not_finite(x + i)) &&
               packed_element<Grade>(x + i, y.at(i), dst + i);
      }));
}

#endif
