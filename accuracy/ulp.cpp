// SPDX-License-Identifier: MIT
#include "accuracy/ulp.h"

#include <algorithm>
#include <bit>

namespace bench {

uint64_t nearest(double value, int width) {
  const volatile float narrow = float(value);
  return width == 4 ? std::bit_cast<uint32_t>(float(narrow)) : std::bit_cast<uint64_t>(value);
}

uint64_t nearest(const mpfr_t value, int width) {
  return width == 4 ? std::bit_cast<uint32_t>(mpfr_get_flt(value, MPFR_RNDN))
                    : std::bit_cast<uint64_t>(mpfr_get_d(value, MPFR_RNDN));
}

void set_exact(mpfr_t to, uint64_t bits, int width) {
  mpfr_set_d(to, as_double(bits, width), MPFR_RNDN);
  if (number_format(width).is_nan(bits)) mpfr_set_nan(to);
}

Error error_of(uint64_t got, int width, const mpfr_t exact) {
  constexpr Error kMismatch{0, 0, true};
  const NumberFormat& format = number_format(width);
  const bool negative = got & format.sign();
  if (mpfr_nan_p(exact) || format.is_nan(got))
    return mpfr_nan_p(exact) && format.is_nan(got) ? Error{} : kMismatch;
  const bool same_sign = bool(mpfr_signbit(exact)) == negative;
  const bool beyond =
      !mpfr_zero_p(exact) && (mpfr_inf_p(exact) || mpfr_get_exp(exact) > format.bias + 1);
  if (format.is_infinite(got) && (beyond || !same_sign)) return same_sign ? Error{} : kMismatch;
  if (mpfr_inf_p(exact)) return kMismatch;
  if (mpfr_zero_p(exact) && format.magnitude(got) == 0) return same_sign ? Error{} : kMismatch;

  Real distance(int(mpfr_get_prec(exact)));
  if (format.is_infinite(got))
    mpfr_set_si_2exp(distance, negative ? -1 : 1, format.bias + 1, MPFR_RNDN);
  else
    set_exact(distance, got, width);
  mpfr_sub(distance, distance, exact, MPFR_RNDA);
  mpfr_abs(distance, distance, MPFR_RNDN);

  const int least = format.least_exponent();
  const int exponent =
      mpfr_zero_p(exact) ? least : std::clamp(int(mpfr_get_exp(exact)) - 1, least, format.bias);
  Error error;
  Real scaled(64);
  mpfr_mul_2si(scaled, distance, format.mantissa - exponent, MPFR_RNDU);
  error.ulp = mpfr_get_d(scaled, MPFR_RNDU);
  if (mpfr_zero_p(exact) || mpfr_get_exp(exact) - 1 < least)
    mpfr_mul_2si(scaled, distance, -least, MPFR_RNDU);
  else
    mpfr_div(scaled, distance, exact, MPFR_RNDA);
  error.relative = std::abs(mpfr_get_d(scaled, MPFR_RNDA));
  return error;
}

}  // namespace bench
