// SPDX-License-Identifier: MIT
//
// What the measurement of errors passes by: where powers become infinite or zero, roots that are
// exact, subnormal operands on a processor that takes them for zeros.
#include <gtest/gtest.h>

#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// ---- Where infinity and zero begin

// For a random base, the exponents on both sides of the one at which the power is `edge`: the
// results beyond must be the infinity or the zero of the exact power, and no others.
template <class U>
static void expect_edges(double edge, int count) {
  using Real = typename Format<U>::Real;
  Random random{23};
  std::vector<U> base, exponent;
  for (int i = 0; i < count; ++i) {
    U x = U(random.next()) % kInfinity<U>;
    if (i % 3 == 1) x = kOne<U> + U(random.next() % 4096) - 2048;
    if (x == 0 || x == kOne<U>) continue;
    Number<200> log;
    set_exact(log.value, x);
    mpfr_log2(log.value, log.value, MPFR_RNDN);
    const Number<200> y = Number<200>(edge) / log;
    const U nearest = stored<U>(y.value);
    if ((nearest & ~kSign<U>) >= kInfinity<U> - 4) continue;
    for (int step = -2; step <= 2; ++step) {
      base.push_back(x);
      exponent.push_back(nearest + U(step));
    }
  }
  std::vector<U> got(base.size());
  for (const Function& f : kFunctions) {
    if (f.family != "Pow" || f.type.complex() || f.type.width != sizeof(Real)) continue;
    f.call({{base.data(), exponent.data()}, {got.data()}, nullptr}, int32_t(got.size()));
    int failures = 0;
    for (size_t i = 0; i < got.size() && failures < 10; ++i) {
      Number<200> x, y;
      set_exact(x.value, base[i]);
      set_exact(y.value, exponent[i]);
      mpfr_pow(x.value, x.value, y.value, MPFR_RNDN);
      const U want = stored<U>(x.value), beyond = edge > 0 ? kInfinity<U> : 0;
      if ((got[i] == beyond) != (want == beyond))
        ADD_FAILURE() << f.name << "(0x" << std::hex << base[i] << ", 0x" << exponent[i]
                      << "): got 0x" << got[i] << ", wanted 0x" << want << " " << ++failures;
    }
  }
}

TEST(Edges, PowOverflows) {
  expect_edges<uint32_t>(128 - 0x1.715476p-25, 4000);  // half an ulp below 2^128
  expect_edges<uint64_t>(1024, 1000);
}
TEST(Edges, PowUnderflows) {
  expect_edges<uint32_t>(-150, 4000);
  expect_edges<uint64_t>(-1075, 1000);
}

// ---- Exact results

// A wrong table entry moves a root by more than the half unit that keeps these exact.
TEST(Exact, CubeRootsOfCubes) {
  std::vector<double> cubes, roots;
  for (int n = -200000; n <= 200000; n += 7) {
    cubes.push_back(double(n) * n * n);
    roots.push_back(n);
  }
  std::vector<double> out(cubes.size());
  EXPECT_EQ(luxsCbrt_64f_A53(cubes.data(), out.data(), int32_t(out.size())), LUX_OK);
  EXPECT_EQ(out, roots);
}

// ---- Denormals are zeros

// Neither that mode of the SSE unit nor the place in a block must be seen in a result of these
// families, which compute singles in packed lanes.
template <class U>
static void expect_same_everywhere(const Function& f) {
  constexpr int kCount = 4000;
  Random random{3};
  std::vector<U> x(kCount), y(kCount), want(kCount), out(kCount);
  for (std::vector<U>* const numbers : {&x, &y})
    for (U& number : *numbers) {
      number = any_pattern<U>(random);
      const uint64_t choice = random.next() % 8;
      if (choice == 0) number &= kSign<U> | (2 * kQuiet<U> - 1);  // subnormal
      if (choice > 2)                                             // around 1
        number = (number & ~kInfinity<U>) | U(Format<U>::bias - 12 + random.next() % 20)
                                                << Format<U>::mantissa;
    }
  const typename Format<U>::Real scalar = 0.75;
  const auto call = [&](int first, int len, std::vector<U>& to) {
    f.call({{&x[first], &y[first]}, {&to[first]}, &scalar}, len);
  };
  call(0, kCount, want);
  set({kDefaultControl, kDefaultMxcsr | 0x40});
  call(0, kCount, out);
  set({});
  EXPECT_EQ(out, want) << f.name << " with denormals as zeros";
  for (int i = 0; i < kCount; ++i) call(i, 1, out);
  EXPECT_EQ(out, want) << f.name << " one by one";
}

TEST(Environment, NeitherDenormalsAreZeroNorPositionMatters) {
  constexpr std::string_view kFamilies[] = {"Cbrt",  "InvCbrt", "Pow",  "Powx", "Asin",  "Acos",
                                            "Atan",  "Atan2",   "Cosh", "Sinh", "Tanh",  "Acosh",
                                            "Asinh", "Atanh",   "Erf",  "Erfc", "ErfInv"};
  for (const Function& f : kFunctions) {
    if (f.type.complex()) continue;
    for (const std::string_view family : kFamilies)
      if (f.family == family && f.type.width == 4)
        expect_same_everywhere<uint32_t>(f);
      else if (f.family == family)
        expect_same_everywhere<uint64_t>(f);
  }
}
