// SPDX-License-Identifier: MIT
//
// Complex powers of arrays in passes: logarithms, angles, their products with the exponents, points of
// the circle, powers of two. Every element gives the bits of its routine, which takes those that the
// short way leaves, and those next to an axis.
#ifndef LUX_COMPLEX_POWER_PASSES_H
#define LUX_COMPLEX_POWER_PASSES_H

#include "complex/passes.h"
#include "complex/pow.h"

// Bases and exponents of a block; the exponents stand beside each other, or there is one.
template <class Number>
struct PowerBlock {
  const Number *base, *exponent;
  int32_t stride, count;

  const Number& w(int32_t k) const { return exponent[k * stride]; }
};

static inline void copy_bits(Complex32* to, const Complex32& from) {
  store_words(to, load_words(&from));
}

// Steps::is_ordinary tells which elements `passes` takes, whole groups of them; it gives the bits of
// those that it leaves to `element` all the same.
template <class Steps, class Number>
static inline void power_block(const PowerBlock<Number>& block, Number* to) {
  if (__builtin_expect(block.count <= Steps::kFew, false)) {
    for (int32_t k = 0; k < block.count; ++k) to[k] = Steps::element(block.base[k], block.w(k));
    return;
  }
  alignas(16) Number base[kPass], exponent[kPass], result[kPass];
  const uint32_t all = (2u << (block.count - 1)) - 1;
  uint32_t apart = 0;
  for (int32_t k = 0; k < block.count; ++k)
    apart |= uint32_t(!Steps::is_ordinary(block.base[k], block.w(k))) << k;
  if (__builtin_expect(apart == 0 && block.count % Steps::kGroup == 0, true)) {
    apart = Steps::passes(block, result);
  } else if (apart != all) {
    const int32_t count = (block.count + Steps::kGroup - 1) & -Steps::kGroup;
    for (int32_t k = 0; k < count; ++k) {
      base[k] = exponent[k] = {1, 1};
      if (all & ~apart & 1u << k) {
        copy_bits(&base[k], block.base[k]);
        copy_bits(&exponent[k], block.w(k));
      }
    }
    apart |= Steps::passes({base, exponent, 1, count}, result) & all;
  }
  for (; __builtin_expect(apart, 0); apart &= apart - 1) {
    const int32_t k = __builtin_ctz(apart);
    result[k] = Steps::element(block.base[k], block.w(k));
  }
  for (int32_t k = 0; k < block.count; ++k) copy_bits(&to[k], result[k]);
}

struct PowerSteps {
  static constexpr int32_t kGroup = 1, kFew = 2;

  // Parts of z are 0 or of 2^-60 to 2^60, those of w 0 or of 2^-60 to 32.
  static bool is_ordinary(const Complex64& z, const Complex64& w) {
    const auto holds = [](const DoubleInMemory& x, uint32_t low, uint32_t high) {
      const Words words = load_words(&x);
      const uint32_t upper = words.upper & ~kSignUpper;
      return (upper - low < high - low) | ((upper | words.lower) == 0);
    };
    constexpr uint32_t kLow = 0x3C300000, kHigh = 0x43B00000, kExponentHigh = 0x40400000;
    return holds(z.re, kLow, kHigh) & holds(z.im, kLow, kHigh) & is_finite_number(z) &
               holds(w.re, kLow, kExponentHigh) & holds(w.im, kLow, kExponentHigh) &&
           !whole_exponent(w) && is_finite_number(w);
  }
  static Complex64 element(const Complex64& z, const Complex64& w) { return complex_pow(z, w); }

  static uint32_t passes(const PowerBlock<Complex64>& block, Complex64* to) {
    const int32_t count = block.count;
    SplitNumber log[kPass], angle[kPass], cosine[kPass], sine[kPass], exponent[kPass];
    double size[kPass];
    int32_t step[kPass], steps[kPass];
    constexpr uint32_t kSizeBound = 0x40580000;  // upper word of 96
    uint32_t apart = 0;
    for (int32_t k = 0; k < count; ++k) {
      const Complex64& z = block.base[k];
      const long double x = load_extended(&z.re), y = load_extended(&z.im);
      Cell cell;
      const long double m = reduced(x * x + y * y, &cell);
      log[k].put(log2_short(m, cell) * 0.5f);
    }
    for (int32_t k = 0; k < count; ++k) put(&step[k], image_step(image_of(block.base[k])));
    for (int32_t k = 0; k < count; ++k) angle[k].put(angle_near(image_of(block.base[k]), step[k]));
    for (int32_t k = 0; k < count; ++k) {
      const Complex64& w = block.w(k);
      const PowerTable& table = anew(power_table);
      const long double u = load_extended(&w.re), v = load_extended(&w.im);
      const long double L = log[k].sum(), A = angle[k].sum();
      put(&size[k], (__builtin_fabsl(u) + __builtin_fabsl(v)) * (__builtin_fabsl(L) + 4.0f));
      exponent[k].put(L * u - A * v * whole(table.right_angle_log2_e));
      angle[k].put(A * u + L * v * whole(table.ln2_by_right_angle));
    }
    for (int32_t k = 0; k < count; ++k) {
      if (__builtin_expect(upper_magnitude(&size[k]) >= kSizeBound, false)) {
        apart |= 1u << k;
        exponent[k] = {0, 0};  // 2^t may leave the range
      }
      put(&step[k], __builtin_fabsl(angle[k].sum()) * 32);
      put(&steps[k], exponent[k].sum() * 256);
    }
    for (int32_t k = 0; k < count; ++k) {
      const Point point =
          circle_near(step[k], __builtin_fabsl(angle[k].sum()) - step[k] * (1 / 32.0L));
      cosine[k].put(point.cosine);
      sine[k].put(point.sine);
    }
    for (int32_t k = 0; k < count; ++k) {
      // Whoever is near the bound goes to the routine, which knows it exactly.
      const uint32_t c = upper_magnitude(&cosine[k].high), s = upper_magnitude(&sine[k].high);
      const uint32_t least = upper_magnitude(&size[k]) - (11 << 20) + 1;
      apart |= uint32_t((c <= least) | (s <= least)) << k;
    }
    for (int32_t k = 0; k < count; ++k) {
      const ScaledPower radius = exp2_near(steps[k], exponent[k].sum() - steps[k] * (1 / 256.0L));
      const double scale = double_power_of_two(radius.exponent);
      put(&to[k].re, radius.value * cosine[k].sum() * scale);
      put(&to[k].im, radius.value * sine[k].sum() * (scale * sign_of(angle[k].high)));
    }
    return apart;
  }
};

template <class E, class Element>
static inline Status run_power_blocks(const E* src, const E* exponents, E* dst, int32_t len,
                                      Element element_block) {
  if (len < 1) return LUX_BAD_LENGTH;
  if (!src || !exponents || !dst) return LUX_NULL_POINTER;
  const X87Nearest<X87_EXTENDED> control;
  for (int32_t i = 0; i < len; i += kPass) element_block(i, len - i < kPass ? len - i : kPass);
  control.leave();
  return LUX_OK;
}

static inline Status run_powers(const Lux64fc* src, const Lux64fc* exponents, int32_t stride,
                                Lux64fc* dst, int32_t len) {
  return run_power_blocks(src, exponents, dst, len, [=](int32_t i, int32_t count) {
    power_block<PowerSteps, Complex64>(
        {&in_memory(src + i), &in_memory(exponents + i * stride), stride, count},
        &in_memory(dst + i));
  });
}

static inline Status run_powers(const Lux32fc* src, const Lux32fc* exponents, int32_t stride,
                                Lux32fc* dst, int32_t len) {
  return run_power_blocks(src, exponents, dst, len, [=](int32_t i, int32_t count) {
    alignas(16) Complex64 base[kPass], exponent[kPass];
    for (int32_t k = 0; k < count; ++k) {
      widen(in_memory(src + i + k), &base[k]);
      widen(in_memory(exponents + (i + k) * stride), &exponent[k]);
    }
    power_block<PowerSteps, Complex64>({base, exponent, 1, count}, base);
    for (int32_t k = 0; k < count; ++k) in_memory(dst + i + k) = narrowed(base[k]);
  });
}

#endif
