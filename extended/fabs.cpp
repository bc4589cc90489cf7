// SPDX-License-Identifier: MIT
//
// Magnitudes of one number in three widths.
#include "core/bits.h"
#include "luxvmk3_scalar.h"

static const double ones[2] = {1.0, -1.0};  // by sign bit

float nox_sabs_scalar(float x) { return __builtin_fabsf(x); }

double nox_dabs_scalar(double x) { return __builtin_fabs(x); }

// The product quiets a signalling NaN; the sign is left of a NaN only.
long double noxfabsl_scalar(long double x) {
  const uint32_t sign = load_words(reinterpret_cast<const char*>(&x) + 4).upper >> 15 & 1;
  return __builtin_fabsl(x * ones[sign]);
}
