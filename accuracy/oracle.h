// SPDX-License-Identifier: MIT
//
// Exact values: each function of the library at high precision, by MPFR and MPC.
#ifndef LUX_ACCURACY_ORACLE_H
#define LUX_ACCURACY_ORACLE_H

#include "accuracy/ulp.h"
#include "catalog/catalog.h"

#include <array>

namespace bench {

// The real numbers that one element takes: first source (two parts when complex), then the second
// source or the scalar.
using Argument = std::array<uint64_t, 4>;

// To about 60 bits.
long double quick_erf_inv(long double x);

class Oracle {
 public:
  explicit Oracle(const Function& function);

  // Real numbers in an argument and in a result.
  static int arguments(const Function& function);
  static int results(const Function& function);

  // After this, exact(k) is real number k of the result, correct to far more bits than the type
  // has.
  void evaluate(const Argument& argument);
  mpfr_srcptr exact(int result) const { return result == 0 ? first_ : second_; }

 private:
  using RealFunction = void (*)(mpfr_ptr first, mpfr_ptr second, mpfr_srcptr x, mpfr_srcptr y);
  using ComplexFunction = void (*)(mpfr_ptr re, mpfr_ptr im, mpfr_srcptr const* parts);
  friend struct OracleRow;

  int width_, arguments_;
  RealFunction real_ = nullptr;
  ComplexFunction complex_ = nullptr;
  Real first_, second_, argument_[4];
};

}  // namespace bench

#endif
