// SPDX-License-Identifier: MIT
#include "accuracy/oracle.h"
#include "catalog/require.h"

#include <mpc.h>

#include <algorithm>
#include <cmath>

namespace bench {

struct OracleRow {
  std::string_view family;
  Oracle::RealFunction real = nullptr;
  Oracle::ComplexFunction complex = nullptr;

  constexpr OracleRow(std::string_view f, Oracle::RealFunction function)
      : family(f), real(function) {}
  constexpr OracleRow(std::string_view f, Oracle::ComplexFunction function)
      : family(f), complex(function) {}
};

namespace {

constexpr int kGuardBits = 32;

class Complex {
 public:
  explicit Complex(int precision) { mpc_init2(value_, precision); }
  Complex(int precision, mpfr_srcptr re, mpfr_srcptr im) : Complex(precision) {
    mpc_set_fr_fr(value_, re, im, MPC_RNDNN);
  }
  ~Complex() { mpc_clear(value_); }
  Complex(const Complex&) = delete;
  operator mpc_ptr() { return value_; }

 private:
  mpc_t value_;
};

template <auto function>
void real_unary(mpfr_ptr r, mpfr_ptr, mpfr_srcptr x, mpfr_srcptr) {
  function(r, x, MPFR_RNDN);
}
template <auto function>
void real_binary(mpfr_ptr r, mpfr_ptr, mpfr_srcptr x, mpfr_srcptr y) {
  function(r, x, y, MPFR_RNDN);
}
template <auto function>
void rounding(mpfr_ptr r, mpfr_ptr, mpfr_srcptr x, mpfr_srcptr) {
  function(r, x);
}
template <auto function>
void complex_unary(mpfr_ptr re, mpfr_ptr im, mpfr_srcptr const* parts) {
  Complex z(int(mpfr_get_prec(re)), parts[0], parts[1]);
  function(z, z, MPC_RNDNN);
  mpc_real(re, z, MPFR_RNDN);
  mpc_imag(im, z, MPFR_RNDN);
}

void inv(mpfr_ptr r, mpfr_ptr, mpfr_srcptr x, mpfr_srcptr) { mpfr_ui_div(r, 1, x, MPFR_RNDN); }

// As 1 / sqrt(x): the sign of a zero is kept.
void inv_sqrt(mpfr_ptr r, mpfr_ptr, mpfr_srcptr x, mpfr_srcptr) {
  if (mpfr_zero_p(x)) return mpfr_set_inf(r, mpfr_signbit(x) ? -1 : 1);
  mpfr_rec_sqrt(r, x, MPFR_RNDN);
}

void inv_cbrt(mpfr_ptr r, mpfr_ptr, mpfr_srcptr x, mpfr_srcptr) {
  Real root(int(mpfr_get_prec(r)) + kGuardBits);
  mpfr_cbrt(root, x, MPFR_RNDN);
  mpfr_ui_div(r, 1, root, MPFR_RNDN);
}

void sin_cos(mpfr_ptr sine, mpfr_ptr cosine, mpfr_srcptr x, mpfr_srcptr) {
  mpfr_sin_cos(sine, cosine, x, MPFR_RNDN);
}

// First the whole, then the fraction.
void modf(mpfr_ptr whole, mpfr_ptr fraction, mpfr_srcptr x, mpfr_srcptr) {
  mpfr_modf(whole, fraction, x, MPFR_RNDN);
}

// One step of Halley's method from the value in long double triples its digits. Near +-1 the
// difference is that of erfc, so that nothing cancels.
void erf_inv(mpfr_ptr r, mpfr_ptr, mpfr_srcptr x, mpfr_srcptr) {
  if (mpfr_nan_p(x) || mpfr_cmpabs_ui(x, 1) > 0) return mpfr_set_nan(r);
  if (mpfr_cmpabs_ui(x, 1) == 0) return mpfr_set_inf(r, mpfr_sgn(x));
  if (mpfr_zero_p(x)) {
    mpfr_set(r, x, MPFR_RNDN);
    return;
  }
  const int precision = int(mpfr_get_prec(r)) + kGuardBits;
  Real y(precision), a(precision), tail(precision), step(precision), slope(precision);
  mpfr_abs(a, x, MPFR_RNDN);
  mpfr_ui_sub(tail, 1, a, MPFR_RNDN);  // used where it is exact
  const bool far = mpfr_cmp_d(a, 0.5) > 0;
  mpfr_set_ld(y, quick_erf_inv(mpfr_get_ld(a, MPFR_RNDN)), MPFR_RNDN);
  for (int i = 0; i < 40; ++i) {
    if (far) {
      mpfr_erfc(step, y, MPFR_RNDN);
      mpfr_sub(step, tail, step, MPFR_RNDN);
    } else {
      mpfr_erf(step, y, MPFR_RNDN);
      mpfr_sub(step, step, a, MPFR_RNDN);
    }
    // slope = 2 exp(-y^2) / sqrt(pi); step = difference / slope / (1 + y difference / slope)
    mpfr_const_pi(slope, MPFR_RNDN);
    mpfr_sqrt(slope, slope, MPFR_RNDN);
    mpfr_mul(step, step, slope, MPFR_RNDN);
    mpfr_sqr(slope, y, MPFR_RNDN);
    mpfr_exp(slope, slope, MPFR_RNDN);
    mpfr_mul(step, step, slope, MPFR_RNDN);
    mpfr_div_ui(step, step, 2, MPFR_RNDN);
    mpfr_mul(slope, y, step, MPFR_RNDN);
    mpfr_add_ui(slope, slope, 1, MPFR_RNDN);
    mpfr_div(step, step, slope, MPFR_RNDN);
    mpfr_sub(y, y, step, MPFR_RNDN);
    // What is left is below 2^9 times the cube of a relative step.
    if (mpfr_zero_p(static_cast<mpfr_srcptr>(step)) ||
        mpfr_get_exp(step) < mpfr_get_exp(y) - int(mpfr_get_prec(r)) / 3 - 4)
      break;
  }
  mpfr_copysign(r, y, x, MPFR_RNDN);
}

// On the negative real axis the imaginary part is positive on either side of the cut.
void complex_sqrt(mpfr_ptr re, mpfr_ptr im, mpfr_srcptr const* parts) {
  complex_unary<mpc_sqrt>(re, im, parts);
  if (mpfr_zero_p(parts[1]) && mpfr_sgn(parts[0]) < 0) {
    mpfr_setsign(re, re, mpfr_signbit(parts[1]), MPFR_RNDN);
    mpfr_abs(im, im, MPFR_RNDN);
  }
}

void complex_log10(mpfr_ptr re, mpfr_ptr im, mpfr_srcptr const* parts) {
  complex_unary<mpc_log10>(re, im, parts);
}

// (sinh x cosh x + i sin y cos y) / (sinh^2 x + cos^2 y), where nothing cancels. MPC takes hours
// where the imaginary part is tiny. Beyond 2^20 a larger x changes no digit of a result.
void complex_tanh(mpfr_ptr re, mpfr_ptr im, mpfr_srcptr const* parts) {
  const int precision = int(mpfr_get_prec(re)) + 32;
  Real x(64), sinh(precision), cosh(precision), sin(precision), cos(precision), sum(precision);
  mpfr_set(x, parts[0], MPFR_RNDN);
  if (mpfr_get_exp(x) > 20 && mpfr_regular_p(x))
    mpfr_set_si(x, mpfr_signbit(x) ? -(1 << 20) : 1 << 20, MPFR_RNDN);
  mpfr_sinh_cosh(sinh, cosh, x, MPFR_RNDN);
  mpfr_sin_cos(sin, cos, parts[1], MPFR_RNDN);
  mpfr_fmma(sum, sinh, sinh, cos, cos, MPFR_RNDN);
  mpfr_mul(sinh, sinh, cosh, MPFR_RNDN);
  mpfr_div(re, sinh, sum, MPFR_RNDN);
  mpfr_mul(sin, sin, cos, MPFR_RNDN);
  mpfr_div(im, sin, sum, MPFR_RNDN);
}

// The parts of tanh(y + ix), exchanged.
void complex_tan(mpfr_ptr re, mpfr_ptr im, mpfr_srcptr const* parts) {
  const mpfr_srcptr exchanged[] = {parts[1], parts[0]};
  complex_tanh(im, re, exchanged);
}

void product_with_log(mpc_ptr product, mpfr_srcptr const* parts) {
  const int precision = int(mpfr_get_prec(mpc_realref(product)));
  Complex z(precision, parts[0], parts[1]), w(precision, parts[2], parts[3]);
  mpc_log(z, z, MPC_RNDNN);
  mpc_mul(product, z, w, MPC_RNDNN);
}

// Powers beyond the exponents of MPFR leave mpc_pow without their angle. They are replaced by ones
// that are as far beyond those of a double, at the same angle, for which the product with the
// logarithm has all bits above the point.
void complex_pow(mpfr_ptr re, mpfr_ptr im, mpfr_srcptr const* parts) {
  constexpr int kFar = 1'000'000, kWholeBits = 1100;
  const int precision = int(mpfr_get_prec(re));
  Complex power(precision, parts[0], parts[1]), about(precision);
  product_with_log(about, parts);
  const mpfr_srcptr magnitude = mpc_realref(static_cast<mpc_ptr>(about));
  if (mpfr_number_p(magnitude) && mpfr_cmpabs_ui(magnitude, kFar) > 0) {
    Complex product(precision + kWholeBits);
    product_with_log(product, parts);
    mpfr_set_si(mpc_realref(static_cast<mpc_ptr>(product)), mpfr_sgn(magnitude) * kFar, MPFR_RNDN);
    mpc_exp(power, product, MPC_RNDNN);
  } else {
    Complex w(precision, parts[2], parts[3]);
    mpc_pow(power, power, w, MPC_RNDNN);
  }
  mpc_real(re, power, MPFR_RNDN);
  mpc_imag(im, power, MPFR_RNDN);
}

// NearbyInt and Rint take the current direction, which is to nearest wherever accuracy is measured.
constexpr OracleRow kRows[] = {
#define LUX_ORACLE(F, kind, function) {#F, function},
#include "core/functions.def"
};

constexpr const OracleRow* find(std::string_view family, bool complex) {
  for (const OracleRow& row : kRows)
    if (row.family == family && (complex ? bool(row.complex) : bool(row.real))) return &row;
  return nullptr;
}

#define LACKING(F, type) #F " " #type ": no LUX_ORACLE in core/functions.def"
#define LUX_FUNCTION(F, type) LUX_REQUIRE(find(#F, is_complex(#type)), LACKING(F, type));
#include "core/functions.def"

int precision_of(const Function& function) { return function.type.width == 4 ? 96 : 144; }

}  // namespace

// Halley's method, as in the oracle; in the tail from the root of -ln(tail y sqrt(pi)).
long double quick_erf_inv(long double x) {
  constexpr long double kHalfRootOfPi = 0.886226925452758013649083741670572591L;
  const long double a = std::fabs(x), tail = 1 - a;
  if (!(a < 1)) return a == 1 ? std::copysign(HUGE_VALL, x) : NAN;
  if (a < 0x1p-40L) return x * kHalfRootOfPi;
  long double y = a * kHalfRootOfPi;
  if (a > 0.5L) {
    const long double minus_log = -std::log(tail);
    y = std::sqrt(minus_log);
    for (int i = 0; i < 6; ++i)
      y = (y + std::sqrt(std::max(0.1L, minus_log - std::log(y * 2 * kHalfRootOfPi)))) / 2;
  }
  for (int i = 0; i < 5; ++i) {
    const long double difference = a > 0.5L ? tail - std::erfc(y) : std::erf(y) - a;
    const long double step = difference * kHalfRootOfPi * std::exp(y * y);
    y -= step / (1 + y * step);
    if (std::fabs(step) < 0x1p-24L * y) break;  // the next error is its cube
  }
  return std::copysign(y, x);
}

int Oracle::arguments(const Function& function) {
  return function.type.parts * (function.shape.sources + (function.shape.scalar ? 1 : 0));
}

int Oracle::results(const Function& function) {
  return function.type.parts * function.shape.destinations;
}

Oracle::Oracle(const Function& function)
    : width_(function.type.width),
      arguments_(arguments(function)),
      first_(precision_of(function)),
      second_(precision_of(function)),
      argument_{Real(53), Real(53), Real(53), Real(53)} {
  const OracleRow* const row = find(function.family, function.type.complex());
  real_ = row->real;
  complex_ = row->complex;
}

void Oracle::evaluate(const Argument& argument) {
  for (int i = 0; i < arguments_; ++i) set_exact(argument_[i], argument[size_t(i)], width_);
  if (complex_) {
    const mpfr_srcptr parts[] = {argument_[0], argument_[1], argument_[2], argument_[3]};
    complex_(first_, second_, parts);
  } else {
    real_(first_, second_, argument_[0], argument_[1]);
  }
}

}  // namespace bench
