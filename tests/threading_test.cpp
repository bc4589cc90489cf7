// SPDX-License-Identifier: MIT
//
// When a call is split, how it is cut, what becomes of the slices' statuses. Linked with the
// library's objects; the topology is imposed, so nothing depends on the machine. The thread count
// is this program's own variable: no core library is linked.
#include <gtest/gtest.h>
#include <omp.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <vector>

#include "core/team.h"
#include "tests/catalog.h"
#include "tests/support.h"
#include "tests/topology_fake.h"

extern "C" int32_t threads_omp_of_n_lux;
int32_t threads_omp_of_n_lux = 2;

// A clock that stands still: no region loses time, and none bars the next.
static std::atomic<int64_t> now;
static int64_t standing_clock() { return now; }
static const bool clock_stands = (nox_clock = standing_clock, true);

// ---- Kernels that record their slices

struct Slice {
  ptrdiff_t first;
  int32_t len;
  bool operator==(const Slice&) const = default;
  bool operator<(const Slice& other) const { return first < other.first; }
};
static std::mutex lock;
static std::vector<Slice> slices;
static std::set<pthread_t> workers;
static std::vector<int> statuses;  // by slice number; empty for all 0
static std::atomic<bool> offsets_agree, scalar_intact;
constexpr int kChunkForStatuses = 4;

template <class E>
struct Bases {
  static inline E memory[4];  // only addresses are used
  static inline const E* src = memory;
  static inline const E* src2 = memory + 1;
  static inline E* dst = memory + 2;
  static inline E* dst2 = memory + 3;
  static inline E scalar;
};

static Status record(ptrdiff_t first, int32_t len, bool agree) {
  const std::lock_guard guard(lock);
  slices.push_back({first, len});
  workers.insert(pthread_self());
  if (!agree) offsets_agree = false;
  const size_t number = first / kChunkForStatuses;
  return number < statuses.size() ? statuses[number] : 0;
}
template <class E>
static Status kernel_1_1(const E* src, E* dst, int32_t len) {
  using B = Bases<E>;
  return record(src - B::src, len, dst - B::dst == src - B::src);
}
template <class E>
static Status kernel_2_1(const E* src1, const E* src2, E* dst, int32_t len) {
  using B = Bases<E>;
  const ptrdiff_t at = src1 - B::src;
  return record(at, len, src2 - B::src2 == at && dst - B::dst == at);
}
template <class E>
static Status kernel_1_2(const E* src, E* dst1, E* dst2, int32_t len) {
  using B = Bases<E>;
  const ptrdiff_t at = src - B::src;
  return record(at, len, dst1 - B::dst == at && dst2 - B::dst2 == at);
}
template <class E>
static Status kernel_2_1_1(const E* src, E scalar, E* dst, int32_t len) {
  using B = Bases<E>;
  if (memcmp(&scalar, &B::scalar, sizeof(E)) != 0) scalar_intact = false;
  return record(src - B::src, len, dst - B::dst == src - B::src);
}

using Splitter = Status (*)(int32_t threads, int null, int32_t len);  // null: which pointer is
#define SPLITTERS(t, E)                                                                           \
  [](int32_t T, int null, int32_t n) {                                                            \
    using B = Bases<E>;                                                                           \
    return nox##t##Threading_1_1(kernel_1_1<E>, T, null == 0 ? nullptr : B::src,                  \
                                 null == 1 ? nullptr : B::dst, n);                                \
  },                                                                                              \
      [](int32_t T, int null, int32_t n) {                                                        \
        using B = Bases<E>;                                                                       \
        return nox##t##Threading_2_1(kernel_2_1<E>, T, null == 0 ? nullptr : B::src,              \
                                     null == 2 ? nullptr : B::src2, null == 1 ? nullptr : B::dst, \
                                     n);                                                          \
      },                                                                                          \
      [](int32_t T, int null, int32_t n) {                                                        \
        using B = Bases<E>;                                                                       \
        return nox##t##Threading_1_2(kernel_1_2<E>, T, null == 0 ? nullptr : B::src,              \
                                     null == 1 ? nullptr : B::dst, null == 2 ? nullptr : B::dst2, \
                                     n);                                                          \
      },                                                                                          \
      [](int32_t T, int null, int32_t n) {                                                        \
        using B = Bases<E>;                                                                       \
        return nox##t##Threading_2_1_1(kernel_2_1_1<E>, T, null == 0 ? nullptr : B::src,          \
                                       B::scalar, null == 1 ? nullptr : B::dst, n);               \
      }
constexpr Splitter kSplitters[] = {SPLITTERS(s, float), SPLITTERS(d, double), SPLITTERS(c, Lux32fc),
                                   SPLITTERS(z, Lux64fc)};

static Status split(Splitter splitter, int32_t threads, int32_t len, int null = -1) {
  slices.clear();
  workers.clear();
  offsets_agree = scalar_intact = true;
  const Status status = splitter(threads, null, len);
  EXPECT_TRUE(offsets_agree && scalar_intact);
  std::sort(slices.begin(), slices.end());
  return status;
}

class Splitters : public testing::TestWithParam<Splitter> {
 protected:
  void SetUp() override {
    statuses.clear();
    Bases<float>::scalar = 1.5f;
    Bases<double>::scalar = -2.5;
    Bases<Lux32fc>::scalar = {1, 2};
    Bases<Lux64fc>::scalar = {3, 4};
  }
};
INSTANTIATE_TEST_SUITE_P(All, Splitters, testing::ValuesIn(kSplitters));

TEST_P(Splitters, CutIntoWholeBlocksAndTheRest) {
  EXPECT_EQ(split(GetParam(), 4, 1000), 0);
  EXPECT_EQ(slices, (std::vector<Slice>{{0, 248}, {248, 248}, {496, 248}, {744, 256}}));
  split(GetParam(), 3, 15);
  EXPECT_EQ(slices, (std::vector<Slice>{{0, 4}, {4, 4}, {8, 7}}));
  split(GetParam(), 1, 7);
  EXPECT_EQ(slices, (std::vector<Slice>{{0, 7}}));
}

TEST_P(Splitters, RunOnceWhereThereIsNothingToSplit) {
  struct {
    int32_t threads, len;
  } const rows[] = {{4, 15},
                    {0, 1000},
                    {-1, 1000},
                    {INT32_MIN, 1000},
                    {INT32_MAX, 1000},
                    {5, 19},
                    {INT32_MAX, 1 << 30},
                    {2, 1},
                    {3, 0},
                    {1000, 3999}};
  for (const auto& [threads, len] : rows) {
    split(GetParam(), threads, len);
    EXPECT_EQ(slices, (std::vector<Slice>{{0, len}})) << threads;
    EXPECT_TRUE(workers.size() == 1 && workers.contains(pthread_self()));
  }
}

TEST_P(Splitters, TestNullPointersBeforeAnythingElse) {
  for (const int32_t threads : {4, 1, 0, -5})
    for (const int null : {0, 1, 2}) {
      const bool has_third = split(GetParam(), 4, 1000, 2) != 0;
      if (null == 2 && !has_third) continue;
      EXPECT_EQ(split(GetParam(), threads, 1000, null), LUX_NULL_POINTER);
      EXPECT_TRUE(slices.empty());
    }
}

TEST_P(Splitters, CoverEverySliceHoweverManyThreadsAreAskedFor) {
  constexpr int32_t kThreads = 10000, kLen = 100003;
  fake_processor.available = 8;
  EXPECT_EQ(split(GetParam(), kThreads, kLen), 0);
  ASSERT_EQ(slices.size(), size_t(kThreads));
  for (int32_t i = 0; i < kThreads; ++i)
    ASSERT_EQ(slices[i], (Slice{8 * i, i < kThreads - 1 ? 8 : kLen - 8 * (kThreads - 1)}));
  EXPECT_LE(workers.size(), 64u);
  EXPECT_GT(workers.size(), 1u);
}

TEST_P(Splitters, MergeStatuses) {
  statuses = {0, 19, 0, 0};
  EXPECT_EQ(split(GetParam(), 4, 16), 19);
  statuses = {18, 0, 0, 0};  // a later zero does not wipe it
  EXPECT_EQ(split(GetParam(), 4, 16), 18);
  statuses = {0, 18, 12, 0};
  const Status merged = split(GetParam(), 4, 16);
  EXPECT_TRUE(merged == 18 || merged == 12) << merged;
}

TEST_P(Splitters, InsideARegionRunTheSameSlicesOnOneThread) {
#pragma omp parallel num_threads(2)
  {
#pragma omp single
    {
      split(GetParam(), 4, 1000);
      EXPECT_EQ(slices, (std::vector<Slice>{{0, 248}, {248, 248}, {496, 248}, {744, 256}}));
      EXPECT_TRUE(workers.size() == 1 && workers.contains(pthread_self()));
    }
  }
}

TEST(Teams, HaveTheThreadsThatAreSetWhenTheRegionStarts) {
  fake_processor.available = 8;
  const Splitter splitter = kSplitters[0];
  for (const int32_t threads : {3, 1, 0, INT32_MIN, 2}) {
    threads_omp_of_n_lux = threads;
    split(splitter, 6, 6000);
    EXPECT_EQ(slices.size(), 6u);
    EXPECT_EQ(workers.size(), size_t(std::max(threads, 1)));
  }
}

// Each look at the clock takes the time that the step would: a slice is short, a region long.
static int64_t losing_clock() {
  thread_local int64_t looks = 0;
  static const pthread_t first = pthread_self();
  return now += pthread_equal(first, pthread_self()) && ++looks % 4 == 0 ? 1000000 : 5000;
}

TEST(Teams, RestWhereTheyLoseTimeAndComeBack) {
  fake_processor.available = 8;
  threads_omp_of_n_lux = 2;
  const Splitter splitter = kSplitters[0];
  const auto used = [&] {
    split(splitter, 2, 1000);
    EXPECT_EQ(slices.size(), 2u);
    return workers.size();
  };
  used();
  EXPECT_EQ(used(), 2u);
  nox_clock = losing_clock;
  used();
  nox_clock = standing_clock;
  EXPECT_EQ(used(), 1u);
  now += 10 * 1000000;  // less than 32 times what was lost
  EXPECT_EQ(used(), 1u);
  now += 1000 * 1000000;
  EXPECT_EQ(used(), 2u);
  EXPECT_EQ(used(), 2u);
}

// The runtime's threads are gone in a child; waiting for them would never end.
TEST_P(Splitters, WorkAfterAFork) {
  split(GetParam(), 3, 1000);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    alarm(20);
    const Status status = split(GetParam(), 3, 1000);
    _exit(status == 0 && slices == std::vector<Slice>{{0, 332}, {332, 332}, {664, 336}} ? 0 : 1);
  }
  int result;
  waitpid(child, &result, 0);
  EXPECT_EQ(result, 0);
}

// ---- The exports: decision and results

static std::atomic<int> reports;
static std::atomic<const float*> reported_base;
static std::atomic<int> reported_index;
int32_t noxsError(int32_t code, int32_t index, const float* base, const float*, const float*,
                  const float*, const char*) {
  ++reports;
  reported_base = base;
  reported_index = index;
  return code;
}
int32_t noxdError(int32_t code, int32_t, const double*, const double*, const double*, const double*,
                  const char*) {
  return code;
}

using Inv = Status (*)(const float*, float*, int32_t);

// Whether a call is split: the report of the last element carries the base of its slice.
static bool splits(Inv inv, int32_t len) {
  std::vector<float> src(len, 1.0f), dst(len);
  src.back() = 0;
  reports = 0;
  EXPECT_EQ(inv(src.data(), dst.data(), len), LUX_POLE);
  EXPECT_EQ(reports, 1);
  EXPECT_EQ(reported_base + reported_index, &src.back());
  return reported_base != src.data();
}

constexpr FakeProcessor kEightPackages = {8, false, 1, 1};  // A = 9000

// Each export fixes its threshold at its first call, so every test has exports of its own.
TEST(Decision, ThresholdOfTheFirstCallHolds) {
  impose(kEightPackages);
  threads_omp_of_n_lux = 2;
  EXPECT_FALSE(splits(luxsInv_32f_A24, 1952));  // 9000 / 4.61, truncated
  EXPECT_TRUE(splits(luxsInv_32f_A24, 1953));
  threads_omp_of_n_lux = 7;  // does not move the threshold
  EXPECT_FALSE(splits(luxsInv_32f_A24, 1952));
  EXPECT_TRUE(splits(luxsInv_32f_A24, 1953));
  threads_omp_of_n_lux = 50;  // at least a hundred elements a thread
  EXPECT_FALSE(splits(luxsInv_32f_A24, 5000));
  EXPECT_TRUE(splits(luxsInv_32f_A24, 5001));
  for (const int32_t threads : {0, -1, INT32_MIN, INT32_MAX, 100000000}) {
    threads_omp_of_n_lux = threads;
    EXPECT_FALSE(splits(luxsInv_32f_A24, 10000)) << threads;
  }
}

TEST(Decision, ARefusalOfTheFirstCallHolds) {
  impose(kEightPackages);
  threads_omp_of_n_lux = 10;  // more than there are processors
  EXPECT_FALSE(splits(luxsInv_32f_A21, 100000));
  threads_omp_of_n_lux = 2;
  EXPECT_FALSE(splits(luxsInv_32f_A21, 100000));
}

TEST(Decision, TheLowestGradeNeverThreads) {
  impose(kEightPackages);
  threads_omp_of_n_lux = 2;
  EXPECT_FALSE(splits(luxsInv_32f_A11, 1000000));
}

TEST(Decision, BadArraysOfAnExportNeverThread) {
  impose(kEightPackages);
  for (const Function& f : kFunctions) {
    if (f.counts) continue;
    const Arrays nothing = {{}, {}, "0123456789abcdef"};  // the scalar is read before the call
    EXPECT_EQ(f.call(nothing, 0), LUX_BAD_LENGTH) << f.name;
    EXPECT_EQ(f.call(nothing, 100000), LUX_NULL_POINTER) << f.name;
  }
}

static std::vector<unsigned char> run_all(const Function& f, int32_t threads, int32_t len) {
  threads_omp_of_n_lux = threads;
  std::vector<unsigned char> data[5];
  Random random{3};
  for (auto& d : data) {
    d.resize(size_t(len) * f.type.bytes());
    for (size_t at = 0; at < d.size(); at += f.type.width) {
      uint64_t x =
          f.type.width == 4 ? any_pattern<uint32_t>(random) : any_pattern<uint64_t>(random);
      // Slices may cut a block of eight, which matters where a special element changes all of it.
      if (has_special_blocks(f)) x = 0x3F000000 | (x & 0x00FFFFFF);
      memcpy(&d[at], &x, f.type.width);
    }
  }
  f.call({{data[0].data(), data[1].data()}, {data[2].data(), data[3].data()}, data[4].data()}, len);
  data[2].insert(data[2].end(), data[3].begin(), data[3].end());
  return data[2];
}

TEST(Results, AreTheSameForAnyNumberOfThreads) {
  impose(kEightPackages);
  for (const Function& f : kFunctions) {
    const bool splits = f.graded() && threshold(f) != INT32_MAX;
    const int32_t len = std::max(splits ? threshold(f) : 0, 700) + 11;
    run_all(f, 2, 1);  // fixes the threshold
    const auto serial = run_all(f, 0, len);
    for (int32_t threads = 1; threads <= 7; ++threads)
      EXPECT_TRUE(run_all(f, threads, len) == serial) << f.name << " with " << threads;
  }
}
