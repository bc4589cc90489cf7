// SPDX-License-Identifier: MIT
//
// The exported handlers of large trigonometric arguments and their reduction, which vector
// functions reach for a part of all arguments only. This program's own report functions see their
// reports.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "accuracy/arguments.h"
#include "tests/mpfr_number.h"
#include "tests/reports.h"

template <class E>
struct Handler {
  std::string name;
  int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);  // none for both at once
  void (*one)(int32_t, const E*, E*, int32_t*);
  void (*two)(int32_t, const E*, E*, E*, int32_t*) = nullptr;

  void operator()(int32_t i, const E* src, E* dst1, E* dst2, int32_t* status) const {
    two ? two(i, src, dst1, dst2, status) : one(i, src, dst1, status);
  }
};
#define VARIANTS(letter, function, exact)                                \
  {#letter #function "_HA", exact, nox##letter##function##_SC_HA},       \
      {#letter #function "_LA", exact, nox##letter##function##_SC_LA}, { \
#letter #function "_A11", exact, nox##letter##function##_SC_A11      \
  }
#define BOTH(letter, variant) \
  { #letter "SinCos_" #variant, nullptr, nullptr, nox##letter##SinCos_SC_##variant }
static const std::vector<Handler<float>> kSingle = {VARIANTS(s, Sin, mpfr_sin),
                                                    VARIANTS(s, Cos, mpfr_cos),
                                                    VARIANTS(s, Tan, mpfr_tan),
                                                    BOTH(s, HA),
                                                    BOTH(s, LA),
                                                    BOTH(s, A11)};
static const std::vector<Handler<double>> kDouble = {VARIANTS(d, Sin, mpfr_sin),
                                                     VARIANTS(d, Cos, mpfr_cos),
                                                     VARIANTS(d, Tan, mpfr_tan),
                                                     BOTH(d, HA),
                                                     BOTH(d, LA),
                                                     BOTH(d, A11)};

// Of every binade from `first` on the numbers nearest to multiples of pi/2, and random ones.
template <class U>
static std::vector<U> hard_arguments(int first, int random_per_binade) {
  Random random{3};
  std::vector<U> all;
  for (int exponent = first; exponent <= Format<U>::bias; ++exponent) {
    std::vector<uint64_t> found = bench::nearest_to_pi_multiples(exponent, sizeof(U));
    for (int k = 0; k < random_per_binade; ++k)
      found.push_back(U(exponent + Format<U>::bias) << Format<U>::mantissa |
                      (U(random.next()) & ((U(1) << Format<U>::mantissa) - 1)));
    for (const uint64_t x : found) {
      all.push_back(U(x));
      all.push_back(U(x) | kSign<U>);
    }
  }
  return all;
}

TEST(Reduction, HasAHundredBitsOfEveryHardDouble) {
  Number<1300> half_pi, x, turns, quarter, exact, pair;
  mpfr_const_pi(half_pi.value, MPFR_RNDN);
  mpfr_div_2ui(half_pi.value, half_pi.value, 1, MPFR_RNDN);
  std::vector<uint64_t> arguments = hard_arguments<uint64_t>(-1, 4);
  arguments.push_back(0x7506AC5B262CA1FF);  // 6381956970095103 2^797, the nearest of all
  for (const double bound : {0x1p17, 0x1p30})
    for (int step = -2; step <= 2; ++step) arguments.push_back(bits(bound) + step);
  for (const uint16_t control : {0x027F, 0x037F}) {
    int failures = 0;
    for (const uint64_t pattern : arguments) {
      double reduced[2];
      set({control});
      const int32_t quadrant = noxreduce_pio2d(std::bit_cast<double>(pattern), reduced);
      set({});
      set_exact(x.value, pattern);
      turns = x / half_pi;
      mpfr_rint(turns.value, turns.value, MPFR_RNDN);
      exact = x - turns * half_pi;
      mpfr_fmod_ui(quarter.value, turns.value, 4, MPFR_RNDN);
      pair = Number<1300>(reduced[0]) + Number<1300>(reduced[1]);
      const Number<1300> error = (pair - exact) / exact;
      const double relative = mpfr_get_d(error.value, MPFR_RNDN);
      const bool normal = std::abs(reduced[1]) <= std::ldexp(std::abs(reduced[0]), -53);
      const int32_t want = (int32_t(mpfr_get_si(quarter.value, MPFR_RNDN)) + 4) & 3;
      if ((quadrant != want || std::abs(relative) > 0x1p-100 || !normal) && failures++ < 10)
        ADD_FAILURE() << "0x" << std::hex << pattern << " under 0x" << control << ": quadrant "
                      << quadrant << " of " << want << ", " << std::hexfloat << reduced[0] << " + "
                      << reduced[1] << ", off by " << std::defaultfloat << relative;
    }
    EXPECT_EQ(failures, 0);
  }
}

TEST(Reduction, LeavesArgumentsNextToZeroAsTheyAre) {
  for (const double x : {0.0, -0.0, 0.5, -0.78, 1e-320}) {
    double reduced[2];
    EXPECT_EQ(noxreduce_pio2d(x, reduced), 0);
    EXPECT_NEAR(reduced[0], x, std::abs(x) * 0x1p-53);
    EXPECT_EQ(std::signbit(reduced[0]), std::signbit(x));
  }
}

template <class U, class E = typename Format<U>::Real>
static void expect_accurate(const std::vector<Handler<E>>& handlers, double bound) {
  std::vector<U> arguments = hard_arguments<U>(-8, 6);
  for (const double step : {0x1p17, 0x1p30})
    for (int k = -2; k <= 2; ++k) arguments.push_back(bits(E(step)) + U(k));
  Number<200> x, exact;
  const auto check = [&](const Handler<E>& h, decltype(mpfr_sin)* function, U argument, E result) {
    set_exact(x.value, argument);
    function(exact.value, x.value, MPFR_RNDN);
    const double ulp = bench::error_of(bits(result), sizeof(U), exact.value).ulp;
    if (!(ulp <= bound))
      ADD_FAILURE() << h.name << " of 0x" << std::hex << argument << ": " << ulp << " ulp";
  };
  for (const Handler<E>& h : handlers) {
    if (!h.name.ends_with("HA")) continue;
    for (const U argument : arguments) {
      const E source = std::bit_cast<E>(argument);
      E first, second;
      int32_t status = 0;
      h(0, &source, &first, &second, &status);
      check(h, h.two ? mpfr_sin : h.exact, argument, first);
      if (h.two) check(h, mpfr_cos, argument, second);
      ASSERT_EQ(status, 0);
    }
  }
}
TEST(Handlers, AreAccurateForHardSingles) { expect_accurate<uint32_t>(kSingle, 0.50001); }
TEST(Handlers, AreAccurateForHardDoubles) { expect_accurate<uint64_t>(kDouble, 0.502); }

// The double functions are right to far more bits than a single has: once rounded, no single's
// result may differ. The first two are next to the middle of two results.
TEST(Handlers, RoundSinglesAsTheDoubleFunctions) {
  std::vector<uint32_t> arguments = {0xC045D0D8, 0x460669FA};
  for (uint32_t x = 1; x < kInfinity<uint32_t>; x += 4001) arguments.push_back(x);
  for (size_t k = 0; k < kSingle.size(); ++k) {
    int failures = 0;
    for (const uint32_t x : arguments) {
      const float single = std::bit_cast<float>(x);
      const double wide = single;
      float got[2] = {};
      double full[2] = {};
      int32_t status = 0;
      kSingle[k](0, &single, got, got + 1, &status);
      kDouble[k](0, &wide, full, full + 1, &status);
      const volatile float want[2] = {float(full[0]), float(full[1])};
      if ((got[0] != want[0] || got[1] != want[1]) && failures++ < 5)
        ADD_FAILURE() << kSingle[k].name << " of 0x" << std::hex << x << std::hexfloat << ": "
                      << got[0] << " " << got[1] << ", not " << want[0] << " " << want[1];
    }
  }
}

template <class U>
struct Special {
  U argument, sine, cosine;
  bool reported;
};
constexpr Special<uint32_t> kSpecialSingles[] = {
    {0x00000000, 0x00000000, 0x3F800000, false}, {0x80000000, 0x80000000, 0x3F800000, false},
    {0x00000001, 0x00000001, 0x3F800000, false}, {0x80000001, 0x80000001, 0x3F800000, false},
    {0x7F800000, 0xFFC00000, 0xFFC00000, true},  {0xFF800000, 0xFFC00000, 0xFFC00000, true},
    {0x7F800001, 0x7FC00001, 0x7FC00001, false}, {0xFFC12345, 0xFFC12345, 0xFFC12345, false}};
constexpr uint64_t kDefaultNaN = 0xFFF8000000000000;
constexpr Special<uint64_t> kSpecialDoubles[] = {
    {0x0000000000000000, 0x0000000000000000, 0x3FF0000000000000, false},
    {0x8000000000000000, 0x8000000000000000, 0x3FF0000000000000, false},
    {0x8000000000000001, 0x8000000000000001, 0x3FF0000000000000, false},
    {0x000FFFFFFFFFFFFF, 0x000FFFFFFFFFFFFF, 0x3FF0000000000000, false},
    {0x302FFFFFFFFFFFFF, 0x302FFFFFFFFFFFFF, 0x3FF0000000000000, false},  // below 2^-252
    {0x3030000000000000, 0x3030000000000000, 0x3FF0000000000000, false},
    {0x7FF0000000000000, kDefaultNaN, kDefaultNaN, true},
    {0xFFF0000000000000, kDefaultNaN, kDefaultNaN, true},
    {0x7FF0000000000001, kDefaultNaN, kDefaultNaN, true},  // taken for an infinity
    {0xFFF00000FFFFFFFF, kDefaultNaN, kDefaultNaN, true},
    {0x7FF0000100000000, kDefaultNaN, kDefaultNaN, false},
    {0x7FF8000000000000, kDefaultNaN, kDefaultNaN, false}};

// Every handler's specials: stored values, the report's fields, the status, no neighbour touched;
// also with the result in place of the argument.
template <class U, class E = typename Format<U>::Real>
static void expect_special(const std::vector<Handler<E>>& handlers, const auto& rows) {
  for (const Handler<E>& h : handlers)
    for (const Special<U>& row : rows)
      for (const int in_place : {0, 1, 2}) {
        const U other = kOne<U>;
        U src[5] = {other, other, other, row.argument, other};
        U separate[2][5] = {{other, other, other, other, other},
                            {other, other, other, other, other}};
        U* const dst1 = in_place == 1 ? src : separate[0];
        U* const dst2 = !h.two ? dst1 : in_place == 2 ? src : separate[1];
        if (in_place == 2 && !h.two) continue;
        int32_t status = 5;
        reports.clear();
        h(3, reals(src), reals(dst1), reals(dst2), &status);
        const bool cosine = h.exact == mpfr_cos;
        EXPECT_EQ(dst1[3], cosine ? row.cosine : row.sine) << h.name << std::hex << row.argument;
        EXPECT_EQ(dst2[3], cosine || h.two ? row.cosine : row.sine)
            << h.name << std::hex << row.argument;
        EXPECT_EQ(reports.size(), size_t(row.reported)) << h.name << std::hex << row.argument;
        for (const Report& r : reports)
          EXPECT_TRUE(r.is(19, 3, h.name) && r.argument1 == src && r.argument2 == src &&
                      r.result1 == dst1 && r.result2 == dst2)
              << h.name << std::hex << row.argument;
        EXPECT_EQ(status, row.reported ? 19 : 5);
        for (const int i : {0, 1, 2, 4})
          EXPECT_TRUE(src[i] == other && dst1[i] == other && dst2[i] == other);
      }
}
TEST(Handlers, GiveSpecialValuesAndReportUnderTheirNames) {
  expect_special<uint32_t>(kSingle, kSpecialSingles);
  expect_special<uint64_t>(kDouble, kSpecialDoubles);
}

// Results do not depend on the caller's control words, which come back; nothing but inexact is
// raised, even with all exceptions but that unmasked; signalling NaNs pass in silence.
template <class U, class E = typename Format<U>::Real>
static void expect_environment(const std::vector<Handler<E>>& handlers,
                               const std::vector<U>& arguments) {
  for (const Handler<E>& h : handlers)
    for (const U argument : arguments) {
      U plain[2] = {};
      int32_t status = 0;
      set({});
      h(0, reals(&argument), reals(plain), reals(plain + 1), &status);
      for (const uint16_t masks : {0x7F, 0x60})
        for (const uint16_t precision : {0x000, 0x200, 0x300})
          for (const uint16_t direction : {0x000, 0x400, 0x800, 0xC00}) {
            const Environment e = {uint16_t(masks | precision | direction), 0x1F80u | 0x6000};
            U result[2] = {};
            set(e);
            h(0, reals(&argument), reals(result), reals(result + 1), &status);
            const Environment after = environment();
            const uint16_t flags = x87_flags();
            const bool empty = x87_stack_empty();
            set({});
            EXPECT_TRUE(result[0] == plain[0] && result[1] == plain[1])
                << h.name << " of 0x" << std::hex << argument << " under 0x" << e.control;
            EXPECT_TRUE(after.control == e.control && after.mxcsr == e.mxcsr && empty);
            EXPECT_EQ(flags & ~kInexact, 0) << h.name << " of 0x" << std::hex << argument;
          }
    }
}
TEST(Handlers, LeaveTheEnvironmentAlone) {
  expect_environment<uint32_t>(
      kSingle, {bits(0.7f), bits(-3e4f), bits(1e6f), bits(-3e38f), 0x7F800001, 0x80000000});
  expect_environment<uint64_t>(
      kDouble, {bits(0.7), bits(-1e5), bits(1e22), bits(-1e300), bits(0x1p-300), 0x7506AC5B262CA1FF,
                0x7FF0000100000000, 0x8000000000000000});
}

TEST(Handlers, RaiseInexactForTinyArguments) {
  for (const double tiny : {0x1p-300, -0x1p-1022, 0x1.8p-253})
    for (const Handler<double>& h : kDouble) {
      double first, second;
      int32_t status = 0;
      set({});
      h(0, &tiny, &first, &second, &status);
      EXPECT_EQ(x87_flags(), kInexact) << h.name << " of " << tiny;
    }
}

// One element out of range takes its block to the handler, which is more accurate than A50.
TEST(Kernels, TangentsOfA50BesideLargeOnesAreTheHandlers) {
  Random random{11};
  int differing = 0;
  for (int k = 0; k < 1000; ++k) {
    double src[7] = {}, dst[7], lone[7], want[7];
    for (double& x : src) x = 100 * random.unit();
    src[random.next() % 4] = 2e5;
    int32_t status = 0;
    luxsTan_64f_A50(src, dst, 7);
    for (int i = 0; i < 7; ++i) {
      luxsTan_64f_A50(src + i, lone + i, 1);
      noxdTan_SC_LA(i, src, want, &status);
      differing += i < 4 && lone[i] != want[i];
      EXPECT_EQ(dst[i], i < 4 ? want[i] : lone[i]) << src[i];
    }
  }
  EXPECT_GT(differing, 0);
}
