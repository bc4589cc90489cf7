// SPDX-License-Identifier: MIT
//
// Every function keeps to its guarantee and reaches its goal on a sample of arguments; and
// the measurement itself: distances, exact values, hard arguments, and that a faulty kernel is
// found.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "accuracy/exhaustive.h"
#include "accuracy/promises.h"
#include "accuracy/record.h"
#include "tests/catalog.h"
#include "tests/support.h"

using bench::Argument;
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
  sampling.samples = grades[0]->type.complex() ? 1500 : 8000;
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

// One element of a call: the patterns of its arguments and of its results.
struct Element {
  uint64_t argument, result[2];
  const Function& function;
};
using Fault = void (*)(Element&);

// The function with that fault in each element. A faulty function is told by its number.
constexpr int kMostFaulty = 24;
static struct {
  const Function* right;
  Fault fault;
} faulty[kMostFaulty];
template <int n>
static Status call_faulty(const Arrays& arrays, int32_t len) {
  const Function& f = *faulty[n].right;
  const Status status = f.call(arrays, len);
  const int width = f.type.width, parts = f.type.parts;
  const auto place = [&](int32_t i, int k) {
    char* const array = static_cast<char*>(arrays.destination[k / parts]);
    return array + i * f.type.bytes() + k % parts * width;
  };
  for (int32_t i = 0; i < len; ++i) {
    const char* const source = static_cast<const char*>(arrays.source[0]) + i * f.type.bytes();
    Element e{load_bits(source, width), {}, f};
    for (int k = 0; k < Oracle::results(f); ++k) e.result[k] = load_bits(place(i, k), width);
    faulty[n].fault(e);
    for (int k = 0; k < Oracle::results(f); ++k) store_bits(place(i, k), e.result[k], width);
  }
  return status;
}
template <int... n>
static Function with_fault(int number, const Function& f, Fault fault,
                           std::integer_sequence<int, n...>) {
  constexpr Status (*kCalls[])(const Arrays&, int32_t) = {call_faulty<n>...};
  faulty[number] = {&f, fault};
  Function spoiled = f;
  spoiled.call = kCalls[number];
  return spoiled;
}
static Function with_fault(int number, const Function& f, Fault fault) {
  return with_fault(number, f, fault, std::make_integer_sequence<int, kMostFaulty>());
}

// Where a fault is: in arguments of one binade, as many as a survey meets often, or in every so
// many of them.
static uint64_t spacing = 1;
static bool in_one_to_two(const Element& e) {
  const NumberFormat& format = number_format(e.function.type.width);
  return e.argument >> format.mantissa == uint64_t(format.bias) && e.argument % spacing == 0;
}
template <int k>
static void off_by_two(Element& e) {
  if (in_one_to_two(e)) e.result[k] += 2;
}
template <int k>
static void of_the_wrong_sign(Element& e) {
  if (in_one_to_two(e)) e.result[k] ^= number_format(e.function.type.width).sign();
}
template <int k>
static void in_the_next_binade(Element& e) {
  if (in_one_to_two(e)) e.result[k] += uint64_t(1) << number_format(e.function.type.width).mantissa;
}
template <int k>
static void no_number(Element& e) {
  const NumberFormat& format = number_format(e.function.type.width);
  if (in_one_to_two(e)) e.result[k] = format.infinity() | format.quiet();
}
static void infinite(Element& e) {
  if (in_one_to_two(e)) e.result[0] = number_format(e.function.type.width).infinity();
}
static void number_for_nan(Element& e) {
  const NumberFormat& format = number_format(e.function.type.width);
  if (format.is_nan(e.result[0])) e.result[0] = format.one();
}
static void zero_of_the_wrong_sign(Element& e) {
  const NumberFormat& format = number_format(e.function.type.width);
  if (format.magnitude(e.result[0]) == 0) e.result[0] ^= format.sign();
}
static void largest_for_infinity(Element& e) {
  if (number_format(e.function.type.width).is_infinite(e.result[0])) --e.result[0];
}
// The result times 1 + sixteenths/16 2^-bits, in singles whose last places are finer.
template <int bits, int sixteenths>
static void off_by_bits(Element& e) {
  if (in_one_to_two(e))
    e.result[0] = ::bits(float(std::bit_cast<float>(uint32_t(e.result[0])) *
                               (1 + sixteenths / 16.0 * std::ldexp(1, -bits))));
}
static void sound(Element&) {}

// A fault in one grade breaks that grade's promise and leaves those of the others.
TEST(Gates, NoticeTheFaultAndItsGradeAlone) {
  const struct {
    const char* name;
    const char* what;
    Fault fault;
    bool broken;
  } rows[] = {
      {"luxsExp_32f_A24", "two last places", off_by_two<0>, true},
      {"luxsExp_32f_A24", "sign", of_the_wrong_sign<0>, true},
      {"luxsExp_32f_A24", "binade", in_the_next_binade<0>, true},
      {"luxsExp_32f_A24", "NaN", no_number<0>, true},
      {"luxsExp_32f_A24", "infinity", infinite, true},
      {"luxsExp_32f_A24", "largest number for infinity", largest_for_infinity, true},
      // The lower grades by relative error: a little on either side of what is promised.
      {"luxsExp_32f_A21", "above 2^-21", off_by_bits<21, 19>, true},
      {"luxsExp_32f_A21", "below 2^-21", off_by_bits<21, 12>, false},
      {"luxsExp_32f_A11", "above 2^-11", off_by_bits<11, 17>, true},
      {"luxsExp_32f_A11", "below 2^-11", off_by_bits<11, 15>, false},
      {"luxsExp_32f_A21", "NaN", no_number<0>, true},
      {"luxsExp_32f_A11", "sign", of_the_wrong_sign<0>, true},
      {"luxsLn_32f_A24", "number for NaN", number_for_nan, true},
      {"luxsErf_32f_A24", "sign of zero", zero_of_the_wrong_sign, true},
      {"luxsInv_64f_A53", "two last places", off_by_two<0>, true},
      {"luxsInv_64f_A50", "two last places of four", off_by_two<0>, false},
      {"luxsInv_64f_A50", "binade", in_the_next_binade<0>, true},
      {"luxsFloor_64f", "two last places", off_by_two<0>, true},
      {"luxsModf_32f", "sign of the fraction", of_the_wrong_sign<1>, true},
      {"luxsSinCos_64f_A53", "cosine", off_by_two<1>, true},
      {"luxsDiv_32f_A24", "two last places", off_by_two<0>, true},
      {"luxsPowx_64f_A53", "two last places", off_by_two<0>, true},
      {"luxsExp_64fc_A53", "real part", off_by_two<0>, true},
      {"luxsExp_64fc_A53", "imaginary part", off_by_two<1>, true},
      {"luxsExp_32fc_A24", "sign of the imaginary part", of_the_wrong_sign<1>, true},
      {"luxsExp_32fc_A11", "NaN for the imaginary part", no_number<1>, true},
      {"luxsSqrt_32fc_A21", "binade of the imaginary part", in_the_next_binade<1>, true},
      // Normwise.
      {"luxsPow_64fc_A53", "real part", off_by_two<0>, true},
      {"luxsPow_64fc_A53", "imaginary part", off_by_two<1>, true},
      {"luxsPow_32fc_A24", "NaN for the imaginary part", no_number<1>, true},
      {"luxsPowx_64fc_A53", "sign of the imaginary part", of_the_wrong_sign<1>, true},
  };
  // All of a function's at once, beside its sound grades: they share the exact values.
  for (auto row = std::begin(rows); row != std::end(rows);) {
    const Function& first = named(row->name);
    std::vector<Function> grades;
    std::vector<std::string> names;
    std::vector<bool> broken;
    const auto add = [&](const Function& f, const std::string& what, bool is_broken) {
      grades.push_back(f);
      names.push_back(std::string(f.name) + ", " + what);
      broken.push_back(is_broken);
    };
    for (const Function& f : kFunctions)
      if (f.is(first.family, first.type.name)) add(f, "sound", false);
    for (int n = 0; row != std::end(rows) && named(row->name).is(first.family, first.type.name);
         ++row, ++n)
      add(with_fault(n, named(row->name), row->fault), row->what, row->broken);
    std::vector<const Function*> all;
    for (const Function& f : grades) all.push_back(&f);
    bench::Sampling sampling;
    sampling.samples = first.type.complex() ? 400 : 2000;
    const auto statistics =
        bench::survey(all, bench::make_arguments(first, sampling), 2, nullptr, kGoOn);
    for (size_t g = 0; g < all.size(); ++g)
      EXPECT_EQ(!bench::within(statistics[g], bench::guarantee(*all[g])), broken[g]) << names[g];
  }
}

// All singles: each fault in a grade of its own, next to a sound one, in the slice where it shows.
TEST(Gates, OfAllSinglesNoticeEachFault) {
  constexpr uint32_t kOne = 0x3F812345, kNan = 0x7FC00000;
  const struct {
    uint32_t slice_of;
    const char* what;
    Fault fault;
    bool broken, other_class;
  } rows[] = {
      {kOne, "nothing", sound, false, false},
      {kOne, "one result", [](Element& e) { e.result[0] += e.argument == kOne ? 3 : 0; }, true,
       false},
      {kOne, "sign", of_the_wrong_sign<0>, true, false},
      {kOne, "binade", in_the_next_binade<0>, true, false},
      {kOne, "NaN", no_number<0>, true, true},
      {kOne, "infinity", infinite, true, false},
      {kOne, "above 2^-21", off_by_bits<21, 19>, true, false},
      {kOne, "below 2^-21", off_by_bits<21, 12>, false, false},
      {kNan, "nothing", sound, false, false},
      {kNan, "number for NaN", number_for_nan, true, true},
  };
  for (auto row = std::begin(rows); row != std::end(rows);) {
    const auto first = row;
    std::vector<Function> functions;
    for (; row != std::end(rows) && row->slice_of == first->slice_of; ++row)
      functions.push_back(with_fault(int(functions.size()), named("luxsExp_32f_A21"), row->fault));
    std::vector<const Function*> all;
    for (const Function& f : functions) all.push_back(&f);
    bench::Exhaustion exhaustion;
    exhaustion.done.assign(bench::Exhaustion::kSlices, true);
    exhaustion.done[first->slice_of >> 22] = false;
    spacing = 0x345;
    bench::exhaust(all, exhaustion, 2, nullptr, nullptr, kGoOn);
    spacing = 1;
    for (size_t i = 0; i < all.size(); ++i) {
      const Statistics& s = exhaustion.statistics[i];
      // What is off by three last places is within 2^-21 and shows in units of these.
      const bool one_result = first[i].what == std::string_view("one result");
      const bench::Accuracy bound =
          one_result ? bench::Accuracy{bench::Accuracy::kUlp, 2} : bench::guarantee(*all[i]);
      EXPECT_EQ(!bench::within(s, bound), first[i].broken) << first[i].what;
      EXPECT_EQ(s.mismatches > 0, first[i].other_class) << first[i].what;
      if (one_result) {
        EXPECT_EQ(s.worst[0].argument[0], kOne);
      }
    }
  }
}

// One wrong result among those of two slices: in the last place, where exact values come from a curve,
// and where a whole block is a NaN.
TEST(Gates, OfAllSinglesBreakThePromiseOfTheNearestNumber) {
  const struct {
    Fault fault;
    uint64_t not_nearest, mismatches;
  } rows[] = {
      {sound, 0, 0},
      {[](Element& e) { e.result[0] ^= e.argument == 0x3F012345; }, 1, 0},
      {[](Element& e) { e.result[0] &= e.argument == 0x40012345 ? 0 : ~0u; }, 0, 1},
  };
  std::vector<Function> functions;
  for (const auto& row : rows)
    functions.push_back(with_fault(int(functions.size()), named("luxsAsin_32f_A24"), row.fault));
  std::vector<const Function*> all;
  for (const Function& f : functions) all.push_back(&f);
  bench::Exhaustion exhaustion;
  exhaustion.done.assign(bench::Exhaustion::kSlices, true);
  exhaustion.done[0x3F012345u >> 22] = exhaustion.done[0x40012345u >> 22] = false;
  bench::exhaust(all, exhaustion, 2, nullptr, nullptr, kGoOn);
  for (size_t i = 0; i < all.size(); ++i) {
    const Statistics& s = exhaustion.statistics[i];
    EXPECT_EQ(s.not_nearest, rows[i].not_nearest) << i;
    EXPECT_EQ(s.mismatches, rows[i].mismatches) << i;
    EXPECT_EQ(bench::within(s, bench::guarantee(*all[i])), i == 0) << i;
  }
}

// One last place beside the correctly rounded quotients.
TEST(Gates, CountWhatIsNotTheNearestNumber) {
  const Function& sound = named("luxsDiv_32f_A24");
  const Function other = with_fault(0, sound, [](Element& e) {
    if (e.argument == 0x40400000) e.result[0] ^= 1;
  });
  std::vector<bench::Argument> arguments;
  for (uint64_t divisor = 0x3F800000; divisor < 0x3F801000; ++divisor)
    arguments.push_back({divisor & 1 ? 0x40400000u : 0x40A00000u, divisor});
  const auto statistics = bench::survey({&sound, &other}, arguments, 2, nullptr, kGoOn);
  EXPECT_EQ(statistics[0].not_nearest, 0u);
  EXPECT_EQ(statistics[1].not_nearest, arguments.size() / 2);
}

// Bounds are inclusive where they are powers of two, and to four decimals where they are stated so.
TEST(Gates, ComparePromisesOfEachKind) {
  using bench::Accuracy;
  const double above = std::nextafter(0x1p-21, 1);
  const struct {
    Accuracy bound;
    double ulp, relative, normwise;
    bool within;
    uint64_t not_nearest = 0;
  } rows[] = {
      {{Accuracy::kUlp, 1}, 1.00004, 9, 9, true},
      {{Accuracy::kUlp, 1}, 1.00006, 0, 0, false},
      {{Accuracy::kRelativeBits, 21}, 9, 0x1p-21, 9, true},
      {{Accuracy::kRelativeBits, 21}, 0, above, 0, false},
      {{Accuracy::kNormwiseBits, 21}, 9, 9, 0x1p-21, true},
      {{Accuracy::kNormwiseBits, 21}, 0, 0, above, false},
      {{Accuracy::kNearest, 0.5}, 0.5, 9, 9, true},
      {{Accuracy::kNearest, 0.5}, 0.5, 0, 0, false, 1},
      {{Accuracy::kExact, 0}, 0, 9, 9, true},
      {{Accuracy::kExact, 0}, 0x1p-20, 0, 0, false},
  };
  for (const auto& row : rows) {
    Statistics s;
    s.worst = {{{}, 0, 0, row.ulp}};
    s.max_relative = row.relative;
    s.max_normwise = row.normwise;
    s.not_nearest = row.not_nearest;
    EXPECT_EQ(bench::within(s, row.bound), row.within) << &row - rows;
    s.mismatches = 1;
    EXPECT_FALSE(bench::within(s, row.bound)) << &row - rows;
  }
  for (const auto& [name, promise] : {std::pair{"luxsExp_32f_A11", "2^-11"},
                                      {"luxsExp_32f_A21", "2^-21"},
                                      {"luxsExp_32f_A24", "1 ulp"},
                                      {"luxsAsin_32f_A24", "0.5 ulp"},
                                      {"luxsExp_64f_A50", "4 ulp"},
                                      {"luxsExp_64f_A53", "1 ulp"},
                                      {"luxsPow_64fc_A53", "2^-52 normwise"},
                                      {"luxsHypot_64f_A50", "1.23 ulp"},
                                      {"luxsRint_32f", "exact"}})
    EXPECT_EQ(bench::text_of(bench::guarantee(named(name))), promise) << name;
}

// A function whose promise leaves out some arguments: a fault there is counted apart, one beside
// them breaks it.
TEST(Gates, LeaveOutOnlyWhatThePromiseDoes) {
  const struct {
    Fault fault;
    bool broken;
  } rows[] = {{[](Element& e) {  // squares that are scaled
                 if (as_double(e.result[0], 8) < 0x1p-540) e.result[0] = 0;
               },
               true},
              {[](Element& e) {  // squares beyond the range
                 if (as_double(e.argument, 8) > 0x1p512) e.result[0] += 100;
               },
               false}};
  for (const auto& row : rows) {
    const Function f = with_fault(0, named("luxsHypot_64f_A53"), row.fault);
    bench::Sampling sampling;
    sampling.samples = 4000;
    const Statistics s =
        bench::survey({&f}, bench::make_arguments(f, sampling), 2, nullptr, kGoOn)[0];
    EXPECT_EQ(!bench::within(s, bench::guarantee(f)), row.broken);
    EXPECT_GT(s.beside, 0u);
    if (!row.broken) {
      EXPECT_GT(s.max_beside, 90);
    }
  }
}

TEST(Exhaustive, GoesOnWhereItStopped) {
  const Function& f = named("luxsExp_32f_A24");
  bench::Exhaustion whole;
  whole.done.assign(bench::Exhaustion::kSlices, true);
  whole.done[0x3F812345u >> 22] = whole.done[0x7FC00000u >> 22] = false;
  bench::Exhaustion halves = whole;
  bench::exhaust({&f}, whole, 1, nullptr, nullptr, kGoOn);
  EXPECT_EQ(whole.statistics[0].count, 1u << 22);  // without the NaNs

  std::atomic<bool> stop{false};
  bench::exhaust(
      {&f}, halves, 1, [&](uint64_t, uint64_t) { stop = true; }, nullptr, stop);
  EXPECT_EQ(std::count(halves.done.begin(), halves.done.end(), false), 1);
  halves = bench::exhaustion_of(Json::parse(bench::record_of(halves).dump()));
  bench::exhaust({&f}, halves, 1, nullptr, nullptr, kGoOn);
  EXPECT_EQ(bench::report_of(f, halves.statistics[0], true).dump(),
            bench::report_of(f, whole.statistics[0], true).dump());
}

// All powers of singles that are numbers of at most 25 bits, and with them all that are the middle of
// two singles: N^n 2^c for N^(2^k) 2^a to the power n / 2^k.
TEST(Pow, RoundsEveryShortPowerToNearestEven) {
  std::vector<float> base, exponent, expected;
  const auto add = [&](long double x, float y, long double power) {
    const auto rounded = float(x);
    if (rounded == 0 || std::isinf(rounded) || (long double)rounded != x) return;
    base.push_back(rounded);
    exponent.push_back(y);
    expected.push_back(float(power));
  };
  for (int k = 0; k < 4; ++k)
    for (uint64_t root = 3; std::pow(double(root), 1 << k) < 0x1p24; root += 2) {
      const long double significand = std::pow(double(root), 1 << k);
      uint64_t power = root;
      for (int n = 1; power < 1 << 25; power *= root, ++n)
        if (k == 0 ? n > 1 : n % 2 != 0)
          for (int a = -(152 >> k); a < 128 >> k; ++a)
            add(std::ldexp(significand, a << k), std::ldexp(float(n), -k),
                std::ldexp((long double)power, std::clamp(a * n, -300, 300)));
    }
  for (int a = -149; a < 128; ++a)
    for (int c = -160; c <= 130; ++c)
      if (const float y = float(double(c) / (a ? a : 1)); a && double(y) * a == c)
        add(std::ldexp(1.0L, a), y, std::ldexp(1.0L, c));
  ASSERT_GT(base.size(), 700'000u);
  std::vector<float> power(base.size());
  luxsPow_32f_A24(base.data(), exponent.data(), power.data(), int32_t(base.size()));
  for (size_t i = 0; i < base.size(); ++i)
    ASSERT_EQ(power[i], expected[i]) << base[i] << " to the power " << exponent[i];
}
