// SPDX-License-Identifier: MIT
//
// What holds between values of the complex exponential, sine, cosine, tangent and their hyperbolic
// partners.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "luxvmk3_scalar.h"
#include "tests/support.h"

using Routine = Lux64fc (*)(Lux64fc);

static bool same_number(double a, double b) { return same(bits(a), bits(b)); }
static bool equal(Lux64fc a, Lux64fc b) {
  return same_number(a.re, b.re) && same_number(a.im, b.im);
}
static std::string text(Lux64fc z) {
  char line[80];
  snprintf(line, sizeof line, "(%a, %a)", z.re, z.im);
  return line;
}

// Ordinary, of every magnitude, zeros, infinities and NaNs.
static std::vector<Lux64fc> numbers() {
  Random random{5};
  std::vector<Lux64fc> all;
  const auto part = [&](int k) {
    if (k % 3 == 0) return 20 * random.unit() - 10;
    if (k % 3 == 1) return 2000 * random.unit() - 1000;
    return std::bit_cast<double>(any_pattern<uint64_t>(random));
  };
  for (int k = 0; k < 9000; ++k) all.push_back({part(k), part(k / 3)});
  return all;
}

struct Symmetry {
  const char* name;
  Routine f;
  int reflected;  // f(-z) is this times f(z); 0 where it is neither
};
static std::ostream& operator<<(std::ostream& out, const Symmetry& s) { return out << s.name; }

class Complex : public testing::TestWithParam<Symmetry> {};
INSTANTIATE_TEST_SUITE_P(
    ExpTrig, Complex,
    testing::Values(Symmetry{"exp", noxcexp_scalar, 0}, Symmetry{"sin", noxcsin_scalar, -1},
                    Symmetry{"cos", noxccos_scalar, 1}, Symmetry{"tan", noxctan_scalar, -1},
                    Symmetry{"sinh", noxcsinh_scalar, -1}, Symmetry{"cosh", noxccosh_scalar, 1},
                    Symmetry{"tanh", noxctanh_scalar, -1}),
    testing::PrintToStringParamName());

// Where Annex G leaves the sign of a zero or an infinity open, which is beside a NaN or at an
// infinite argument, a symmetry may end.
static bool open(double a, double b) { return (a == 0 || std::isinf(a)) && a == -b; }
static bool equal_but_open(Lux64fc z, Lux64fc a, Lux64fc b) {
  if (std::isfinite(z.re) && std::isfinite(z.im)) return equal(a, b);
  return (same_number(a.re, b.re) || (open(a.re, b.re) && !std::isfinite(z.im))) &&
         (same_number(a.im, b.im) || (open(a.im, b.im)));
}

TEST_P(Complex, SymmetriesHoldBitForBit) {
  const auto& [name, f, reflected] = GetParam();
  for (const Lux64fc z : numbers()) {
    const Lux64fc w = f(z), conjugate = f({z.re, -z.im});
    ASSERT_TRUE(equal_but_open(z, conjugate, {w.re, -w.im})) << text(z);
    if (reflected == 0) continue;
    const Lux64fc opposite = f({-z.re, -z.im});
    ASSERT_TRUE(equal_but_open(z, opposite, {reflected * w.re, reflected * w.im})) << text(z);
  }
}

TEST(ComplexExpTrig, TrigonometricFunctionsAreTheirPartnersTurned) {
  for (const Lux64fc z : numbers()) {
    const Lux64fc w = {std::isnan(z.im) ? z.im : -z.im, z.re};
    const auto back = [](Lux64fc v) { return Lux64fc{v.im, -v.re}; };
    ASSERT_TRUE(equal(noxcsin_scalar(z), back(noxcsinh_scalar(w)))) << text(z);
    ASSERT_TRUE(equal(noxctan_scalar(z), back(noxctanh_scalar(w)))) << text(z);
    ASSERT_TRUE(equal(noxccos_scalar(z), noxccosh_scalar(w))) << text(z);
  }
}
