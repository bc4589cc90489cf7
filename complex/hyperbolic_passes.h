// SPDX-License-Identifier: MIT
//
// Exponential, hyperbolic and circular functions of complex arrays in passes: what needs the
// exponential, then sine and cosine with the products. Every element gives the bits of its routine.
#ifndef LUX_COMPLEX_HYPERBOLIC_PASSES_H
#define LUX_COMPLEX_HYPERBOLIC_PASSES_H

#include "complex/functions.h"
#include "complex/passes.h"

// Whether the hyperbolic part is no subnormal number: to store what is left of one would trap where
// the caller has underflow unmasked.
static inline bool may_pass(const DoubleInMemory& x, const DoubleInMemory& y) {
  const Words w = load_words(&x);
  const bool subnormal = (w.upper & ~kSignUpper) < 0x00100000 && !_nox_internal_iszero(x);
  return is_ordinary(&x, &y) & !subnormal;
}

// Of one part of each number, the first at `part`.
struct Reductions {
  int32_t n[kPass];
  double rest[kPass];

  Reduced operator[](int32_t k) const {
    return {n[k], load_extended(&n[k]), load_extended(&rest[k])};
  }
};

template <int32_t (*kSteps)(long double), Reduced (*kReduced)(long double, int32_t), bool kSigned>
__attribute__((always_inline)) static inline void reduction_pass(const DoubleInMemory* part,
                                                                 int32_t count, Reductions* to) {
  const auto load = [=](int32_t k) {
    const long double x = load_extended(part + 2 * k);
    return kSigned ? x : __builtin_fabsl(x);
  };
  for (int32_t k = 0; k < count; ++k) to->n[k] = kSteps(load(k));
  for (int32_t k = 0; k < count; ++k) put(&to->rest[k], kReduced(load(k), to->n[k]).rest);
}

__attribute__((noinline)) static void sine_reduction_pass(const DoubleInMemory* part, int32_t count,
                                                          Reductions* to) {
  reduction_pass<sine_steps, sine_reduced, true>(part, count, to);
}

struct ExpSteps {
  static constexpr int32_t kFew = 0;
  static bool is_ordinary(const Complex64& z) { return may_pass(z.re, z.im); }
  static Complex64 element(const Complex64& z) {
    return is_finite(z.re) && is_finite(z.im) ? finite_exp(z) : complex_exp_special(z);
  }

  static void passes(const Complex64* from, Complex64* to, int32_t count) {
    Reductions reduced;
    SplitNumber fraction[kPass];
    double scale[kPass];
    reduction_pass<exp_steps, exp_reduced, true>(&from->re, count, &reduced);
    for (int32_t k = 0; k < count; ++k) scale[k] = double_power_of_two(reduced.n[k] >> 8);
    for (int32_t k = 0; k < count; ++k) fraction[k].put(exp_near(reduced[k]).fraction);
    sine_reduction_pass(&from->im, count, &reduced);
    for (int32_t k = 0; k < count; ++k) {
      const SineCosine y = sine_cosine_near(reduced[k]);
      const long double size = fraction[k].sum() * scale[k];
      put(&to[k].re, size * y.cosine);
      put(&to[k].im, size * y.sine);
    }
  }
};

// Of magnitudes.
struct Hyperbolics {
  SplitNumber sinh[kPass], cosh[kPass];
};

__attribute__((noinline)) static void hyperbolic_pass(const DoubleInMemory* part, int32_t count,
                                                      Hyperbolics* to) {
  Reductions reduced;
  double scale[kPass], inverse[kPass];
  reduction_pass<exp_steps, exp_reduced, false>(part, count, &reduced);
  for (int32_t k = 0; k < count; ++k) scale[k] = double_power_of_two((reduced.n[k] >> 8) - 1);
  for (int32_t k = 0; k < count; ++k) inverse[k] = inverse_square(reduced.n[k]);
  for (int32_t k = 0; k < count; ++k) {
    const Hyperbolic h = sinh_cosh_near(reduced[k], inverse[k]);
    to->sinh[k].put(h.sine * scale[k]);
    to->cosh[k].put(h.cosine * scale[k]);
  }
}

// Both parts from the four numbers, extended or packed.
struct SinhOf {
  static auto re(const auto& p) { return p.sinh * p.cos; }
  static auto im(const auto& p) { return p.cosh * p.sin; }
};

struct SinOf {
  static auto re(const auto& p) { return p.cosh * p.sin; }
  static auto im(const auto& p) { return p.sinh * p.cos; }
};

struct CoshOf {
  static auto re(const auto& p) { return p.cosh * p.cos; }
  static auto im(const auto& p) { return p.sinh * p.sin; }
};

struct CosOf {
  static auto re(const auto& p) { return p.cosh * p.cos; }
  static auto im(const auto& p) { return -(p.sinh * p.sin); }
};

struct TanhOf {
  static auto factor(const auto& p) { return 1.0f / (p.sinh * p.sinh + p.cos * p.cos); }
  static auto re(const auto& p) { return p.sinh * p.cosh * factor(p); }
  static auto im(const auto& p) { return p.sin * p.cos * factor(p); }
};

struct TanOf {
  static auto re(const auto& p) { return TanhOf::im(p); }
  static auto im(const auto& p) { return TanhOf::re(p); }
};

// kTurned: a circular function, whose hyperbolic part is the imaginary one.
template <bool kTurned, Complex64 (*kElement)(const Complex64&), class PartsOf>
struct HyperbolicSteps {
  using Parts = PartsOf;
  static constexpr bool kIsTurned = kTurned;
  static constexpr int32_t kFew = 0;

  static bool is_ordinary(const Complex64& z) {
    return kTurned ? may_pass(z.im, z.re) : may_pass(z.re, z.im);
  }
  static Complex64 element(const Complex64& z) {
    if (!is_finite(z.re) || !is_finite(z.im)) return kElement(z);
    const FourParts p = kTurned ? finite_parts(&z.im, &z.re) : finite_parts(&z.re, &z.im);
    return rounded(Parts::re(p), Parts::im(p));
  }

  static void passes(const Complex64* from, Complex64* to, int32_t count) {
    Hyperbolics h;
    const DoubleInMemory* const part = kTurned ? &from->im : &from->re;
    hyperbolic_pass(part, count, &h);
    Reductions reduced;
    sine_reduction_pass(kTurned ? &from->re : &from->im, count, &reduced);
    for (int32_t k = 0; k < count; ++k) {
      SineCosine y = sine_cosine_near(reduced[k]);
      asm volatile("" : "+t"(y.sine), "+u"(y.cosine));
      const long double sinh = h.sinh[k].sum() * sign_of(part[2 * k]);
      const FourParts p = {sinh, h.cosh[k].sum(), y.sine, y.cosine};
      put(&to[k].re, Parts::re(p));
      put(&to[k].im, Parts::im(p));
    }
  }
};

using SinhSteps = HyperbolicSteps<false, complex_sinh, SinhOf>;
using CoshSteps = HyperbolicSteps<false, complex_cosh, CoshOf>;
using TanhSteps = HyperbolicSteps<false, complex_tanh, TanhOf>;
using SinSteps = HyperbolicSteps<true, complex_sin, SinOf>;
using CosSteps = HyperbolicSteps<true, complex_cos, CosOf>;
using TanSteps = HyperbolicSteps<true, complex_tan, TanOf>;

#endif
