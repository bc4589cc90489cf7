// SPDX-License-Identifier: MIT
//
// That the arrays of a measurement hold what it says: so many special elements, evenly spread, in
// the right source, at the right addresses.
#include "bench/arguments.h"
#include "catalog/number_format.h"
#include "cli/cliff_classes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>

using bench::Arguments;
using bench::Share;

static const Function& function(std::string_view name) {
  for (const Function& f : kFunctions)
    if (f.name == name) return f;
  throw std::runtime_error("no such function");
}

TEST(Share, SpreadsEvenly) {
  for (const Share share :
       {Share{1, 4}, Share{1, 1}, Share{10000, 1000000}, Share{300000, 1000000}}) {
    constexpr int64_t kElements = 20'000'000;
    const double gap = double(share.of) / double(share.special);
    int64_t last = -1;
    for (int64_t i = 0; i < 5000; ++i) {
      if (!share.holds(i)) continue;
      if (last >= 0) {
        EXPECT_LT(std::fabs(double(i - last) - gap), 1) << share.special << " at " << i;
      }
      last = i;
    }
    EXPECT_NEAR(double(share.before(kElements)), double(kElements) / gap, 1);
  }
  EXPECT_FALSE(Share{}.holds(0));
}

TEST(Arguments, SpecialElementsStandInTheirSource) {
  const Arguments inverse(function("luxsInv_32f_A24"), {800, 0, {1, 8}, false});
  const Arguments quotient(function("luxsDiv_64f_A53"), {800, 0, {1, 8}, false});
  const float* const x = static_cast<const float*>(inverse.arrays.source[0]);
  const double* const numerators = static_cast<const double*>(quotient.arrays.source[0]);
  const double* const divisors = static_cast<const double*>(quotient.arrays.source[1]);
  for (int i = 0; i < 800; ++i) {
    EXPECT_EQ(x[i] == 0, i % 8 == 3) << i;
    EXPECT_EQ(divisors[i] == 0, i % 8 == 3) << i;
    EXPECT_GE(std::fabs(numerators[i]), 0.1) << i;
  }
}

TEST(Arguments, EveryFunctionHasAnIntervalAndItsOffset) {
  for (const Function& f : kFunctions)
    for (const int32_t offset : {0, 1, 63}) {
      const Arguments arguments(f, {100, offset, {}, false});
      for (const void* array : {arguments.arrays.source[0], arguments.arrays.source[1],
                                const_cast<const void*>(arguments.arrays.destination[0])})
        EXPECT_EQ(reinterpret_cast<uintptr_t>(array) % 64, uintptr_t(offset)) << f.name;
      EXPECT_EQ(arguments.arrays.destination[1] != nullptr, f.shape.destinations == 2) << f.name;
    }
}

TEST(Arguments, LargeOnesAreAllLarge) {
  int count = 0;
  for (const Function& f : kFunctions) {
    if (!bench::has_large_arguments(f)) continue;
    ++count;
    const Arguments arguments(f, {1000, 0, {}, true});
    bool negative = false;
    for (int i = 0; i < 1000; ++i) {
      const char* const at =
          static_cast<const char*>(arguments.arrays.source[0]) + i * f.type.width;
      float single;
      double value;
      memcpy(&single, at, 4);
      if (f.type.width == 8)
        memcpy(&value, at, 8);
      else
        value = single;
      EXPECT_GE(std::fabs(value), 9.9e5) << f.name;
      EXPECT_LE(std::fabs(value), 1.01e30) << f.name;
      negative |= value < 0;
    }
    EXPECT_TRUE(negative) << f.name;
  }
  EXPECT_EQ(count, 4 * 5);  // sine, cosine, both, tangent; 3 single and 2 double grades
}

// A class by its name, and what its elements must be; of the classes from special rows, the code that
// the function gives for them.
TEST(CliffClasses, HoldWhatTheirNamesSay) {
  using Holds = bool (*)(const NumberFormat& format, uint64_t x);
  const std::map<std::string, Holds> kinds = {
      {"zeros", [](const NumberFormat&, uint64_t x) { return x == 0; }},
      {"negative zeros", [](const NumberFormat& f, uint64_t x) { return x == f.sign(); }},
      {"subnormals",
       [](const NumberFormat& f, uint64_t x) { return f.magnitude(x) - 1 < f.digits(); }},
      {"tiny",
       [](const NumberFormat& f, uint64_t x) {
         return f.magnitude(x) >= f.least_normal() && f.magnitude(x) < f.one();
       }},
      {"huge", [](const NumberFormat& f,
                  uint64_t x) { return f.is_finite(x) && f.magnitude(x) > f.one(); }},
      {"infinities", [](const NumberFormat& f, uint64_t x) { return f.is_infinite(x); }},
      {"NaNs", [](const NumberFormat& f, uint64_t x) { return f.is_quiet_nan(x); }}};
  const std::map<std::string, Status> codes = {
      {"overflow", 12}, {"underflow", 17}, {"poles", 18}, {"outside the domain", 19}};
  std::map<std::string, int> seen;
  for (const Function& f : kFunctions) {
    size_t found = 0;
    for (const CliffClass& made : cliff_classes(f)) {
      SCOPED_TRACE(std::string(f.name) + " " + made.name);
      ASSERT_FALSE(made.elements.empty());
      ++seen[made.name];
      const std::string second = "second operand: ";
      const int operand = made.name.starts_with(second);
      if (const auto kind = kinds.find(made.name.substr(operand ? second.size() : 0));
          kind != kinds.end()) {
        found += operand == 0;
        for (const bench::Element& element : made.elements)
          for (int part = 0; part < f.type.parts; ++part)
            EXPECT_TRUE(kind->second(number_format(f.type.width), element.operand[operand][part]));
      }
      bench::Filling filling{100, 0, {1, 1}};
      filling.elements = &made.elements;
      const Arguments arguments(f, filling);
      const Status status = f.call(arguments.arrays, filling.n);
      if (const auto code = codes.find(made.name); code != codes.end()) {
        EXPECT_EQ(status, code->second);
      }
    }
    EXPECT_EQ(found, kinds.size()) << f.name;
  }
  for (const char* name :
       {"overflow", "underflow", "poles", "outside the domain", "negative", "subnormal results",
        "beyond the fast reduction", "real", "imaginary", "negative, whole second operand"})
    EXPECT_GT(seen[name], 0) << name;
}
