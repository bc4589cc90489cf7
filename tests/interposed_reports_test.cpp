// SPDX-License-Identifier: MIT
//
// A program of its own report functions and its own thread count: it sees every report of the
// shared library, with the documented arguments.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <vector>

#include "tests/reports.h"

extern "C" __attribute__((visibility("default"))) int32_t threads_omp_of_n_lux;
int32_t threads_omp_of_n_lux = 3;

template <class E>
constexpr E kNaN = std::numeric_limits<E>::quiet_NaN();
template <class E>
constexpr E kInf = std::numeric_limits<E>::infinity();

TEST(Interposed, AReportMaySetTheResult) {
  const double seven = 7;
  replacement = &seven;
  for (const std::vector<double>& src : {std::vector<double>{-1}, {2, -1}, {-1, 2}, {2, 3, 0}}) {
    std::vector<double> dst(src.size());
    luxsLn_64f_A53(src.data(), dst.data(), int32_t(src.size()));
    for (size_t i = 0; i < src.size(); ++i) EXPECT_EQ(dst[i] == 7, src[i] <= 0) << src[i];
  }
  replacement = nullptr;
}

TEST(Interposed, TheRoundingFunctionsReportNothing) {
  reports.clear();
  const float src[] = {kNaN<float>, kInf<float>, 1e-45f, 0};
  float dst[4], dst2[4];
  for (const auto f : {luxsFloor_32f, luxsCeil_32f, luxsTrunc_32f, luxsRound_32f, luxsRint_32f})
    f(src, dst, 4);
  luxsModf_32f(src, dst, dst2, 4);
  EXPECT_TRUE(reports.empty());
}

// The thread count is this program's variable; a slice's reports count from its own start.
TEST(Interposed, SlicesReportIndicesOfTheirOwn) {
  const int32_t threshold = noxsMinN(0, 0, 3);
  if (threshold > 50000000) GTEST_SKIP() << "this machine's topology never threads with three";
  const int32_t len = std::max(threshold, 300) + 5, chunk = len / 3 & ~3;
  std::vector<float> src(len, 1.0f), dst(len);
  const std::set<int32_t> zeros = {0, chunk - 1, chunk, 2 * chunk + 7, len - 1};
  for (const int32_t i : zeros) src[i] = 0;
  reports.clear();
  EXPECT_EQ(luxsInv_32f_A24(src.data(), dst.data(), len), 18);
  std::map<const void*, std::set<int32_t>> seen;
  for (const Report& r : reports) seen[r.argument1].insert(r.index);
  EXPECT_EQ(reports.size(), zeros.size());
  EXPECT_EQ(seen, (std::map<const void*, std::set<int32_t>>{
                      {&src[0], {0, chunk - 1}},
                      {&src[chunk], {0}},
                      {&src[2 * chunk], {7, len - 1 - 2 * chunk}}}));
}
