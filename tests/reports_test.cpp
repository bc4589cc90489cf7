// SPDX-License-Identifier: MIT
//
// Every report of every export, seen by a program that brings its own report functions: the special
// rows stand at every place of short arrays, and what each call reports must be what its elements
// report alone, in order, with the bases of the call's arrays, after the result was stored.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "conformance/special_values.h"
#include "tests/reports.h"
#include "tests/support.h"

static const Function* watched;
static int64_t calls_with_reports;
static std::string first_wrong;

static void expect(bool condition, int32_t len, const std::string& what) {
  if (!condition && first_wrong.empty())
    first_wrong = std::string(watched->name) + ", length " + std::to_string(len) + ": " + what;
}

// Reports name nothing, but those of the handlers for large arguments. Sine, cosine and both at once
// of doubles have one handler for both grades.
static std::string expected_name() {
  const Function& f = *watched;
  for (const char* const family : {"Sin", "Cos", "SinCos", "Tan"})
    if (f.family == family) {
      const bool one = f.type.width == 8 && f.family != "Tan";
      return f.type.letter + std::string(family) + (f.variant == 0 || one ? "_HA" : "_LA");
    }
  return "";
}

static Arrays element_of(const Arrays& arrays, int32_t i) {
  Arrays one = arrays;
  for (auto& source : one.source)
    if (source) source = static_cast<const char*>(source) + i * watched->type.bytes();
  for (auto& destination : one.destination)
    if (destination) destination = static_cast<char*>(destination) + i * watched->type.bytes();
  return one;
}

static Status watch(const Arrays& arrays, int32_t len) {
  const Function& f = *watched;
  // What the elements report alone; their results are the call's to store.
  std::vector<std::pair<int32_t, int32_t>> codes;  // code, index
  for (int32_t i = 0; len > 1 && i < len; ++i) {
    unsigned char dst[2][16];
    Arrays one = element_of(arrays, i);
    one.destination[0] = dst[0];
    one.destination[1] = dst[1];
    reports.clear();
    if (const Status status = f.call(one, 1)) codes.push_back({status, i});
    expect(reports.size() <= 1, 1, "an element is reported more than once");
  }
  reports.clear();
  const Status status = f.call(arrays, len);
  if (len == 1 && status) codes.push_back({status, 0});
  if (!codes.empty()) ++calls_with_reports;
  // A packed block of eight reports its zeros first.
  if (has_special_blocks(f))
    std::stable_sort(codes.begin(), codes.end(), [&](const auto& a, const auto& b) {
      const auto block = [&](int32_t i) { return i < (len & ~7) ? i / 8 : i; };
      return block(a.second) != block(b.second) ? a.second < b.second : a.first < b.first;
    });
  expect(reports.size() == codes.size(), len, "another number of reports than of elements");
  for (size_t k = 0; k < std::min(reports.size(), codes.size()); ++k) {
    const Report& r = reports[k];
    expect(r.code == codes[k].first && r.index == codes[k].second, len, "another code or index");
    expect(r.stored, len, "reported before the result is stored");
    expect(r.argument1 == arrays.source[0], len, "another first source");
    if (f.shape.scalar)
      expect(memcmp(r.first_of_argument2, arrays.scalar, f.type.width) == 0, len, "another scalar");
    else
      expect(r.argument2 == arrays.source[f.shape.sources - 1], len, "another second source");
    expect(r.result1 == arrays.destination[0], len, "another first destination");
    expect(r.result2 == arrays.destination[f.shape.destinations - 1], len,
           "another second destination");
    expect(r.name == expected_name(), len, "the name " + r.name);
  }
  expect(status == (codes.empty() ? 0 : codes.back().first), len,
         "the status is not the last code");
  return status;
}

class Reports : public testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(All, Reports, testing::ValuesIn(kFunctions),
                         [](const auto& info) { return std::string(info.param.name.substr(4)); });

TEST_P(Reports, AreThoseOfTheElements) {
  const Function& f = GetParam();
  if (f.counts) GTEST_SKIP() << "returns no status";
  watched = &f;
  calls_with_reports = 0;
  first_wrong.clear();
  Function spied = f;
  spied.call = watch;
  const bench::SpecialOutcome outcome = bench::check_special_values(spied);
  EXPECT_TRUE(outcome.failures.empty()) << outcome.failures[0];  // their codes are the rows'
  EXPECT_EQ(first_wrong, "");
  constexpr const char* kSilent[] = {"Cbrt", "Asinh", "Atan", "Atan2", "Erf", "Tanh", "Hypot"};
  const bool silent =
      !f.graded() || f.type.complex() || std::ranges::find(kSilent, f.family) != std::end(kSilent);
  EXPECT_EQ(calls_with_reports == 0, silent) << calls_with_reports << " calls reported";
}
