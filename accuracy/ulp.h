// SPDX-License-Identifier: MIT
//
// The distance of a computed number from the exact value.
//
// A unit in the last place is the spacing of the format's numbers in the binade of the exact value,
// never below the spacing of the subnormals nor above that of the last binade. The distance is the
// whole one, not the number of representable values between: a correctly rounded result is up to
// half a unit off. Infinity stands for the first power of two beyond the range.
#ifndef LUX_ACCURACY_ULP_H
#define LUX_ACCURACY_ULP_H

#include "catalog/number_format.h"

#include <mpfr.h>

namespace bench {

// The number nearest to `value`.
uint64_t nearest(double value, int width);
uint64_t nearest(const mpfr_t value, int width);
void set_exact(mpfr_t to, uint64_t bits, int width);

struct Error {
  double ulp = 0;
  double relative = 0;    // to the exact value, or to the least normal number where that is larger
  bool mismatch = false;  // no distance: a NaN, an infinity or the sign of a zero is wrong
};

Error error_of(uint64_t got, int width, const mpfr_t exact);

// A number of MPFR that frees itself.
class Real {
 public:
  explicit Real(int precision) { mpfr_init2(value_, precision); }
  ~Real() { mpfr_clear(value_); }
  Real(const Real&) = delete;
  operator mpfr_ptr() { return value_; }
  operator mpfr_srcptr() const { return value_; }

 private:
  mpfr_t value_;
};

}  // namespace bench

#endif
