// SPDX-License-Identifier: MIT
#include "accuracy/ulp.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace bench {

uint64_t load_bits(const void* from, int width) {
  uint64_t bits = 0;
  memcpy(&bits, from, size_t(width));  // little-endian
  return bits;
}

void store_bits(void* to, uint64_t bits, int width) { memcpy(to, &bits, size_t(width)); }

int64_t position(uint64_t bits, int width) {
  const int64_t magnitude = int64_t(bits & ~layout(width).sign());
  return bits & layout(width).sign() ? -magnitude : magnitude;
}

uint64_t at_position(int64_t position, int width) {
  return position < 0 ? uint64_t(-position) | layout(width).sign() : uint64_t(position);
}

uint64_t nearest(double value, int width) {
  const volatile float narrow = float(value);
  return width == 4 ? std::bit_cast<uint32_t>(float(narrow)) : std::bit_cast<uint64_t>(value);
}

uint64_t nearest(const mpfr_t value, int width) {
  return width == 4 ? std::bit_cast<uint32_t>(mpfr_get_flt(value, MPFR_RNDN))
                    : std::bit_cast<uint64_t>(mpfr_get_d(value, MPFR_RNDN));
}

double as_double(uint64_t bits, int width) {
  return width == 4 ? double(std::bit_cast<float>(uint32_t(bits))) : std::bit_cast<double>(bits);
}

void set_exact(mpfr_t to, uint64_t bits, int width) {
  mpfr_set_d(to, as_double(bits, width), MPFR_RNDN);
  if (is_nan(bits, width)) mpfr_set_nan(to);
}

Error error_of(uint64_t got, int width, const mpfr_t exact) {
  constexpr Error kMismatch{0, 0, true};
  const auto [mantissa, bias] = layout(width);
  const bool negative = got & layout(width).sign();
  if (mpfr_nan_p(exact) || is_nan(got, width))
    return mpfr_nan_p(exact) && is_nan(got, width) ? Error{} : kMismatch;
  const bool same_sign = bool(mpfr_signbit(exact)) == negative;
  const bool beyond =
      !mpfr_zero_p(exact) && (mpfr_inf_p(exact) || mpfr_get_exp(exact) > layout(width).bias + 1);
  if (is_infinite(got, width) && (beyond || !same_sign)) return same_sign ? Error{} : kMismatch;
  if (mpfr_inf_p(exact)) return kMismatch;
  if (mpfr_zero_p(exact) && at_position(0, width) == (got & ~layout(width).sign()))
    return same_sign ? Error{} : kMismatch;

  Real distance(int(mpfr_get_prec(exact)));
  if (is_infinite(got, width))
    mpfr_set_si_2exp(distance, negative ? -1 : 1, bias + 1, MPFR_RNDN);
  else
    set_exact(distance, got, width);
  mpfr_sub(distance, distance, exact, MPFR_RNDA);
  mpfr_abs(distance, distance, MPFR_RNDN);

  const int least = layout(width).least_exponent();
  const int exponent =
      mpfr_zero_p(exact) ? least : std::clamp(int(mpfr_get_exp(exact)) - 1, least, bias);
  Error error;
  Real scaled(64);
  mpfr_mul_2si(scaled, distance, mantissa - exponent, MPFR_RNDU);
  error.ulp = mpfr_get_d(scaled, MPFR_RNDU);
  if (mpfr_zero_p(exact) || mpfr_get_exp(exact) - 1 < least)
    mpfr_mul_2si(scaled, distance, -least, MPFR_RNDU);
  else
    mpfr_div(scaled, distance, exact, MPFR_RNDA);
  error.relative = std::abs(mpfr_get_d(scaled, MPFR_RNDA));
  return error;
}

}  // namespace bench
