// SPDX-License-Identifier: MIT
//
// Every function keeps to its guarantee and reaches its goal on a sample of arguments; and
// the measurement itself: distances, exact values, hard arguments, and that a faulty kernel is
// found.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "accuracy/exhaustive.h"
#include "accuracy/promises.h"
#include "accuracy/record.h"
#include "tests/catalog.h"
#include "tests/support.h"

using bench::Argument;
using bench::Case;
using bench::Oracle;
using bench::Real;
using bench::Statistics;

constexpr std::atomic<bool> kGoOn{false};

// ---- The functions

class Accuracy : public testing::TestWithParam<std::vector<const Function*>> {};

static std::vector<std::vector<const Function*>> groups() {
  std::vector<std::vector<const Function*>> all;
  for (const Function& f : kFunctions) {
    if (all.empty() || !all.back()[0]->is(f.family, f.type.name)) all.emplace_back();
    all.back().push_back(&f);
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(All, Accuracy, testing::ValuesIn(groups()), [](const auto& info) {
  return std::string(info.param[0]->family) + "_" + std::string(info.param[0]->type.name);
});

TEST_P(Accuracy, KeepsToGuaranteeAndGoal) {
  const auto& grades = GetParam();
  bench::Sampling sampling;
  sampling.samples = grades[0]->type.complex() ? 3000 : 20'000;
  const auto arguments = bench::make_arguments(*grades[0], sampling);
  const auto statistics = bench::survey(grades, arguments, 2, nullptr, kGoOn);
  for (size_t g = 0; g < grades.size(); ++g) {
    const Statistics& s = statistics[g];
    const std::string worst = s.worst.empty() ? "-" : bench::hex(s.worst[0].argument[0], 8);
    const bench::Accuracy guaranteed = bench::guarantee(*grades[g]);
    const bench::Goal* const goal = bench::find_goal(*grades[g]);
    EXPECT_EQ(s.mismatches, 0u) << grades[g]->name << " first at "
                                << bench::hex(s.mismatched[0].argument[0], 8) << ": "
                                << bench::hex(s.mismatched[0].got, 8);
    EXPECT_TRUE(bench::within(s, guaranteed))
        << grades[g]->name << ": " << s.max_ulp() << " ulp at " << worst << ", not "
        << bench::text_of(guaranteed);
    // The goals of the kernels that start from the processor's estimate are those of one processor.
    const bool estimate = grades[g]->is("Sqrt", "32f") || grades[g]->is("InvSqrt", "32f");
    EXPECT_TRUE(!goal || estimate || bench::within(s, goal->accuracy))
        << grades[g]->name << ": " << s.max_ulp() << " ulp at " << worst << ", not "
        << bench::text_of(goal->accuracy);
  }
}

// ---- Distances

TEST(UlpError, IsTheFullDistanceInTheExactValuesBinade) {
  const struct {
    uint64_t got;
    int width;
    const char* exact;
    double ulp;
    bool mismatch;
  } rows[] = {
      {0x3F800000, 4, "0x1.000001p0", 0.5, false},    // midway above 1
      {0x3F800000, 4, "0x0.ffffff8p0", 0.5, false},   // below 1 the unit is half as large
      {0x3F800001, 4, "0x0.ffffffp0", 3, false},      //
      {0x3F800000, 4, "1", 0, false},                 //
      {0xBF800000, 4, "1", 16777216, false},          // a wrong sign is far, not a mismatch
      {0x00000001, 4, "0x1p-150", 0.5, false},        // subnormals: units of the least
      {0x00000000, 4, "0x1p-150", 0.5, false},        //
      {0x80000000, 4, "0x1p-150", 0.5, false},        // any zero is as far
      {0x00000000, 4, "-0", 0, true},                 // but an exact zero has a sign
      {0x7F800000, 4, "0x1.ffffffp127", 0.5, false},  // infinity stands for 2^128
      {0x7F7FFFFF, 4, "0x1.ffffffp127", 0.5, false},  //
      {0x7F7FFFFF, 4, "0x1p128", 1, false},           //
      {0x7F800000, 4, "0x1p999", 0, false},           //
      {0xFF800000, 4, "0x1p999", 0, true},            //
      {0x7F7FFFFF, 4, "inf", 0, true},                // a pole must be met
      {0x7FC00000, 4, "1", 0, true},                  //
      {0x3F800000, 4, "nan", 0, true},                //
      {0x7FC00000, 4, "nan", 0, false},               //
      {0x3FF0000000000001, 8, "1", 1, false},         //
      {0x3FF0000000000000, 8, "0x1.00000000000004p0", 0.25, false},
      {0x0000000000000003, 8, "0x1.4p-1073", 0.5, false},
  };
  for (const auto& row : rows) {
    Real exact(120);
    mpfr_strtofr(exact, row.exact, nullptr, 0, MPFR_RNDN);
    const bench::Error error = bench::error_of(row.got, row.width, exact);
    EXPECT_EQ(error.mismatch, row.mismatch) << std::hex << row.got << " for " << row.exact;
    EXPECT_DOUBLE_EQ(error.ulp, row.ulp) << std::hex << row.got << " for " << row.exact;
  }
}

// ---- Exact values

static const Function& named(std::string_view name) {
  return *std::find_if(std::begin(kFunctions), std::end(kFunctions),
                       [&](const Function& f) { return f.name == name; });
}

TEST(Oracle, KnowsEveryFunction) {
  for (const Function& f : kFunctions) EXPECT_NO_THROW(Oracle{f}) << f.name;
}

TEST(Oracle, AgreesWithKnownValues) {
  const struct {
    const char* name;
    double x, y;
    const char* first;
    const char* second;
  } rows[] = {
      {"luxsInvCbrt_64f_A53", -8, 0, "-0.5", nullptr},
      {"luxsSinCos_64f_A53", 1, 0, "0.84147098480789650665250232163029899962256306079837",
       "0.54030230586813971740093660744297660373231042061792"},
      {"luxsModf_64f", -2.75, 0, "-2", "-0.75"},
      {"luxsRint_64f", 2.5, 0, "2", nullptr},
      {"luxsAtan2_64f_A53", -1, 0, "-1.5707963267948966192313216916397514420985846996876", nullptr},
      {"luxsPowx_64f_A53", 2, 0.5, "1.4142135623730950488016887242096980785696718753769", nullptr},
      // Abramowitz and Stegun's table of the error function, by its inverse.
      {"luxsErfInv_64f_A53", 0.84270079294971489, 0, "1.0000000000000000536", nullptr},
      // A component each: log(-1 + 0i) = i pi.
      {"luxsLn_64fc_A53", -1, 0, "0", "3.1415926535897932384626433832795028841971693993751"},
      {"luxsSqrt_64fc_A53", -4, -0.0, "-0", "2"},
      // 4 sin(1) cos(1) e^-2000000 beside i, of which MPC would compute for minutes.
      {"luxsTan_64fc_A53", 1, 1e6, "1.2e-868588", "1"},
      {"luxsTanh_64fc_A53", -1e300, 2, "-1", "-0"},
  };
  for (const auto& row : rows) {
    Oracle oracle(named(row.name));
    oracle.evaluate({bits(row.x), bits(row.y)});
    for (const auto& [k, text] : {std::pair{0, row.first}, std::pair{1, row.second}}) {
      if (!text) continue;
      Real want(160), distance(160);
      mpfr_strtofr(want, text, nullptr, 10, MPFR_RNDN);
      mpfr_sub(distance, oracle.exact(k), want, MPFR_RNDN);
      EXPECT_LT(std::abs(mpfr_get_d(distance, MPFR_RNDN)), 1e-17) << row.name << " part " << k;
    }
  }
}

TEST(Oracle, InverseErrorFunctionUndoesTheErrorFunction) {
  Oracle inverse(named("luxsErfInv_64f_A53"));
  for (const double x : {1e-300, 1e-9, 0.3, 0.5, 0.75, 0.999, 1 - 0x1p-53, -0.6}) {
    inverse.evaluate({bits(x)});
    const bool tail = x > 0.5;  // where erf itself tells little of its argument
    Real back(144);
    (tail ? mpfr_erfc : mpfr_erf)(back, inverse.exact(0), MPFR_RNDN);
    mpfr_div_d(back, back, tail ? 1 - x : x, MPFR_RNDN);
    mpfr_sub_ui(back, back, 1, MPFR_RNDN);
    EXPECT_LT(std::abs(mpfr_get_d(back, MPFR_RNDN)), 0x1p-130) << x;
  }
}

TEST(HardArguments, IncludeTheDoubleNearestToAMultipleOfHalfPi) {
  const auto found = bench::nearest_to_pi_multiples(849, 8);
  EXPECT_TRUE(std::count(found.begin(), found.end(), bits(6381956970095103.0 * 0x1p797)));
  for (int exponent = 0; exponent < 1024; exponent += 31)
    for (const uint64_t x : bench::nearest_to_pi_multiples(exponent, 8))
      EXPECT_EQ(int(x >> 52) - 1023, exponent);
}

// ---- Faults

// The exponential, spoiled.
template <class Fault>
static Function spoiled(std::string_view name, Fault) {
  static const Function* right;
  right = &named(name);
  Function f = *right;
  f.call = [](const Arrays& arrays, int32_t len) {
    const Status status = right->call(arrays, len);
    for (int32_t i = 0; i < len; ++i)
      Fault()(static_cast<const uint32_t*>(arrays.source[0])[i], i,
              static_cast<uint32_t*>(arrays.destination[0])[i]);
    return status;
  };
  return f;
}

template <class Fault>
static Statistics survey_of(Fault fault) {
  const Function f = spoiled("luxsExp_32f_A24", fault);
  bench::Sampling sampling;
  sampling.samples = 20'000;
  return bench::survey({&f}, bench::make_arguments(f, sampling), 2, nullptr, kGoOn)[0];
}

TEST(Survey, FindsAWrongLane) {
  const Statistics s = survey_of([](uint32_t x, int32_t i, uint32_t& y) {
    if (i % 4 == 2 && x >> 23 == 0x7F) y += 2;  // [1, 2)
  });
  EXPECT_GT(s.max_ulp(), 1.4);
}
TEST(Survey, FindsAWrongBound) {  // the last argument with a finite result
  const Statistics s = survey_of([](uint32_t x, int32_t, uint32_t& y) {
    if (x == 0x42B17217) y = 0x7F800000;
  });
  EXPECT_GT(s.max_ulp(), 100);
  EXPECT_EQ(s.worst[0].argument[0], 0x42B17217u);
}
TEST(Survey, FindsAWrongBinade) {
  const Statistics s = survey_of([](uint32_t x, int32_t, uint32_t& y) {
    if (x >> 23 == 127 + 256 - 20) y += 2;  // -2^-20
  });
  EXPECT_GT(s.max_ulp(), 1.4);
  const auto is_there = [](const Case& c) { return c.argument[0] >> 23 == 127 + 256 - 20; };
  EXPECT_TRUE(is_there(s.worst[0]));
}
TEST(Survey, CountsResultsOfAnotherClassApart) {
  const Statistics s = survey_of([](uint32_t x, int32_t, uint32_t& y) {
    if (x >> 20 == 0x412) y = 0x7FC00000;
  });
  EXPECT_GT(s.mismatches, 0u);
  EXPECT_LT(s.max_ulp(), 0.62);
  EXPECT_FALSE(bench::within(s, {bench::Accuracy::kUlp, 1}));
}

TEST(Exhaustive, FindsOneWrongResultAndGoesOnWhereItStopped) {
  const Function f = spoiled("luxsExp_32f_A24", [](uint32_t x, int32_t, uint32_t& y) {
    if (x == 0x3F812345) y += 3;
  });
  const std::vector<const Function*> grades{&f};
  const auto two_slices = [] {
    bench::Exhaustion exhaustion;
    exhaustion.done.assign(bench::Exhaustion::kSlices, true);
    // One of results, one of NaNs.
    exhaustion.done[0x3F812345u >> 22] = exhaustion.done[0x7FC00000u >> 22] = false;
    return exhaustion;
  };
  bench::Exhaustion whole = two_slices();
  bench::exhaust(grades, whole, 1, nullptr, nullptr, kGoOn);
  EXPECT_EQ(whole.statistics[0].worst[0].argument[0], 0x3F812345u);
  EXPECT_GT(whole.statistics[0].max_ulp(), 2.4);
  EXPECT_EQ(whole.statistics[0].count, 1u << 22);

  bench::Exhaustion halves = two_slices();
  std::atomic<bool> stop{false};
  bench::exhaust(
      grades, halves, 1, [&](uint64_t, uint64_t) { stop = true; }, nullptr, stop);
  EXPECT_EQ(std::count(halves.done.begin(), halves.done.end(), false), 1);
  halves = bench::exhaustion_of(Json::parse(bench::record_of(halves).dump()));
  bench::exhaust(grades, halves, 1, nullptr, nullptr, kGoOn);
  EXPECT_EQ(bench::report_of(f, halves.statistics[0], true).dump(),
            bench::report_of(f, whole.statistics[0], true).dump());
}
