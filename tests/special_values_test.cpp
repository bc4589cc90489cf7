// SPDX-License-Identifier: MIT
//
// The rows of conformance/special_values.def, and what no row can say.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "conformance/special_values.h"
#include "tests/catalog.h"
#include "tests/support.h"

class SpecialValues : public testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(All, SpecialValues, testing::ValuesIn(kFunctions),
                         [](const auto& info) { return std::string(info.param.name.substr(4)); });

TEST_P(SpecialValues, StandAtEveryPlace) {
  const bench::SpecialOutcome outcome = bench::check_special_values(GetParam());
  for (const std::string& failure : outcome.failures) ADD_FAILURE() << failure;
  EXPECT_GT(outcome.rows, 0) << "conformance/special_values.def has no rows for it";
}

// Kernels with a fault each, which the rows must show.
struct Fault {
  std::string_view name;
  void (*spoil)(const Arrays& arrays, int32_t len, Status& status);
  std::string_view complaint;
};
static uint32_t* result(const Arrays& a, int destination = 0) {
  return static_cast<uint32_t*>(a.destination[destination]);
}
static const uint32_t* argument(const Arrays& a) {
  return static_cast<const uint32_t*>(a.source[0]);
}
constexpr Fault kFaults[] = {
    {"luxsExp_32f_A24",
     [](const Arrays& a, int32_t len, Status&) {
       if (len > 6 && argument(a)[6] == kInfinity<uint32_t>) result(a)[6] -= 1;
     },
     "(0x7F800000): at 6 of 7 the result is 0x7F7FFFFF, not 0x7F800000 (6 of 78 places"},
    {"luxsExp_32f_A21",
     [](const Arrays& a, int32_t len, Status&) {
       if (len > 4 && argument(a)[0] == 0xFF800000) result(a)[3] ^= 1;
     },
     "(0xFF800000): at 0 of 5 its neighbour at 3 is"},
    {"luxsInv_32f_A24",
     [](const Arrays& a, int32_t len, Status& status) {
       if (len == 9 && argument(a)[8] == 0x80000000) status = 0;
     },
     "(0x80000000): at 8 of 9 the status is 0, not 18 (1 of 78 places"},
    {"luxsModf_32f",
     [](const Arrays& a, int32_t, Status&) {
       if (argument(a)[0] == 0xC0A00000) result(a, 1)[0] = 0;
     },
     "(0xC0A00000): at 0 of 1 the result is 0x00000000, not 0x80000000 (12 of 78 places"}};

static const Function* sound;
static const Fault* fault;
static Status spoiled_call(const Arrays& arrays, int32_t len) {
  Status status = sound->call(arrays, len);
  fault->spoil(arrays, len, status);
  return status;
}

TEST(FaultyKernels, AreFoundWithTheirFirstPlace) {
  for (const Fault& f : kFaults) {
    const auto found = std::find_if(std::begin(kFunctions), std::end(kFunctions),
                                    [&](const Function& g) { return g.name == f.name; });
    ASSERT_NE(found, std::end(kFunctions));
    Function spoiled = *found;
    sound = &*found;
    fault = &f;
    spoiled.call = spoiled_call;
    const auto failures = bench::check_special_values(spoiled).failures;
    ASSERT_EQ(failures.size(), 1u) << f.name;
    EXPECT_NE(failures[0].find(f.complaint), std::string::npos) << failures[0];
  }
}

// The status is the code of the last element reported, wherever in a block it stands.
TEST(SpecialBlocks, TheLastReportDecides) {
  for (const Function& f : kFunctions) {
    if (!f.is("Exp", "32f")) continue;
    const float over = 100, under = -110, one = 1;
    float dst[9];
    for (const auto& [src, status] : std::initializer_list<std::pair<std::vector<float>, int>>{
             {{over, under, one, one}, 17},
             {{under, over, one, one}, 12},
             {{one, over, one, one, under, one, one, one, one}, 17},
             {{one, under, one, one, one, one, one, one, over}, 12}}) {
      const Arrays a{{src.data()}, {dst}, nullptr};
      EXPECT_EQ(f.call(a, int32_t(src.size())), status);
    }
  }
}

// One division for four doubles is exact enough only while their product fits the single range.
TEST(SpecialBlocks, InvOfBlocksAtTheEdgesOfTheSharedDivision) {
  const double blocks[][4] = {{1e200, 1e200, 1e-200, 1e-200}, {1e300, 1e300, 1, 1},
                              {1e-300, 1e-300, 1, 1},         {1, 4e-320, 1, 1},
                              {0x1p-75, 0x1p-75, 1, 1},       {0x1p-75, 0x1.0000001p-75, 1, 1},
                              {0x1p64, 0x1.fffffep63, 1, 1},  {0x1p64, 0x1.fffffdp63, 1, 1}};
  for (const Function& f : kFunctions) {
    if (!f.is("Inv", "64f")) continue;
    for (const auto& block : blocks) {
      double dst[4];
      EXPECT_EQ(f.call({{block}, {dst}, nullptr}, 4), 0);
      for (int i = 0; i < 4; ++i) {
        const volatile double want = 1 / block[i];
        EXPECT_LE(steps_apart(bits(double(want)), bits(dst[i])), 1u) << block[i];
      }
    }
  }
}
