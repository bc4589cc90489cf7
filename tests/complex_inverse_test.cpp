// SPDX-License-Identifier: MIT
//
// Complex inverse sine and cosine, circular and hyperbolic: points that random ones miss, and
// symmetries.
#include <gtest/gtest.h>
#include <mpc.h>

#include <cmath>
#include <vector>

#include "luxvmk3_scalar.h"
#include "tests/mpfr_number.h"

using Routine = Lux64fc (*)(Lux64fc);
using Oracle = int (*)(mpc_ptr, mpc_srcptr, mpc_rnd_t);

struct Function {
  const char* name;
  Routine routine;
  Oracle exact;
};
static std::ostream& operator<<(std::ostream& out, const Function& f) { return out << f.name; }

// The hyperbolic partners are bound to these two by the symmetries below.
class ComplexInverse : public testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(Complex, ComplexInverse,
                         testing::Values(Function{"acos", noxcacos_scalar, mpc_acos},
                                         Function{"asin", noxcasin_scalar, mpc_asin}),
                         testing::PrintToStringParamName());

// Distance in units of the double's last place; a wrong sign is infinitely far.
static double ulps(double got, mpfr_srcptr exact) {
  if (std::signbit(got) != !!mpfr_signbit(exact)) return INFINITY;
  Number<200> difference;
  mpfr_sub_d(difference.value, exact, got, MPFR_RNDN);
  const long exponent =
      mpfr_zero_p(exact) ? -1021 : std::max(mpfr_get_exp(exact), mpfr_exp_t(-1021));
  mpfr_mul_2si(difference.value, difference.value, 53 - exponent, MPFR_RNDN);
  return std::fabs(mpfr_get_d(difference.value, MPFR_RNDN));
}

// Beside the branch points at every distance, to which one part or the other is proportional; on
// the unit circle, where |z|^2 - 1 is what its rounding leaves; along its cut; at both ends of the
// range.
static std::vector<Lux64fc> hard_points() {
  std::vector<Lux64fc> all;
  const int depths[] = {1, 26, 53, 100, 537, 1022, 1074};
  for (const int depth : depths) {
    const double y = std::ldexp(1.0, -depth);
    all.insert(all.end(), {{y, y}, {0, y}, {y, 0}, {1, y}});
    for (const int k : {1, 26, 52}) {
      const double d = std::ldexp(1.0, -k);
      all.insert(all.end(), {{1 + d, y}, {1 - d / 2, y}, {y, 1 + d}, {y, 1 - d / 2}});
    }
    if (depth < 1023) {
      const double large = std::ldexp(1.9, depth);
      all.insert(all.end(), {{large, y}, {y, large}, {large, large}});
    }
  }
  Random random{41};
  for (int k = 0; k < 100; ++k) {
    const double x = std::ldexp(random.unit(), -int(random.next() % 40));
    const double y = std::sqrt((1 - x) * (1 + x));
    all.insert(all.end(), {{x, y}, {std::nextafter(y, 2), x}});
  }
  all.push_back({0x1.fffffffffffffp1023, 0x1.fffffffffffffp1023});
  return all;
}

TEST_P(ComplexInverse, IsAccurateAtHardPoints) {
  mpc_t z, exact;
  mpc_init2(z, 53);
  mpc_init2(exact, 120);
  for (const Lux64fc& first : hard_points())
    for (const Lux64fc& point :
         {first, Lux64fc{first.im, first.re}, Lux64fc{-first.re, -first.im}}) {
      mpc_set_d_d(z, point.re, point.im, MPC_RNDNN);
      GetParam().exact(exact, z, MPC_RNDNN);
      const Lux64fc got = GetParam().routine(point);
      EXPECT_LE(ulps(got.re, mpc_realref(exact)), 0.505)
          << std::hexfloat << point.re << " " << point.im;
      EXPECT_LE(ulps(got.im, mpc_imagref(exact)), 0.505)
          << std::hexfloat << point.re << " " << point.im;
    }
  mpc_clear(z);
  mpc_clear(exact);
  mpfr_free_cache();
}

static std::vector<Lux64fc> ordinary_points() {
  Random random{43};
  std::vector<Lux64fc> all;
  for (int k = 0; k < 4000; ++k) {
    const auto number = [&] {
      return std::ldexp(2 * random.unit() - 1, k % 2 ? 2 : int(random.next() % 1000) - 500);
    };
    all.push_back({number(), number()});
  }
  return all;
}

TEST(ComplexInverse, SymmetriesHoldToTheLastBit) {
  const auto expect_same = [](Lux64fc a, Lux64fc b, Lux64fc z) {
    EXPECT_EQ(bits(a.re), bits(b.re)) << std::hexfloat << z.re << " " << z.im;
    EXPECT_EQ(bits(a.im), bits(b.im)) << std::hexfloat << z.re << " " << z.im;
  };
  for (const Lux64fc& z : ordinary_points()) {
    const Lux64fc conjugate = {z.re, -z.im}, opposite = {-z.re, -z.im};
    for (const Routine f : {noxcacos_scalar, noxcasin_scalar, noxcacosh_scalar, noxcasinh_scalar}) {
      const Lux64fc w = f(z);
      expect_same(f(conjugate), {w.re, -w.im}, z);
    }
    for (const Routine f : {noxcasin_scalar, noxcasinh_scalar}) {
      const Lux64fc w = f(z);
      expect_same(f(opposite), {-w.re, -w.im}, z);
    }
    const Lux64fc turned = noxcasinh_scalar({-z.im, z.re}), angle = noxcacos_scalar(z);
    expect_same(noxcasin_scalar(z), {turned.im, -turned.re}, z);
    expect_same(noxcacosh_scalar(z), {std::fabs(angle.im), std::copysign(angle.re, z.im)}, z);
  }
}
