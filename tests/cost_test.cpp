// SPDX-License-Identifier: MIT
//
// The cost model on imposed topologies, against an independent computation in quad precision.
#include <gtest/gtest.h>

#include <barrier>
#include <cmath>
#include <thread>
#include <vector>

#include "core/cost_tables.h"
#include "luxvmk3.h"
#include "tests/support.h"
#include "tests/topology_fake.h"

extern "C" int32_t threads_omp_of_n_lux;
int32_t threads_omp_of_n_lux = 2;

constexpr int32_t kNever = 0x7FFFFFFF;

struct Machine {
  const char* what;
  FakeProcessor cpu;
  int32_t cores, packages, most_threads;
  double start_up;  // -1 never
};
const Machine kMachines[] = {
    {"two packages", {2, false, 1, 1}, 2, 2, 2, 9000},
    {"four cores", {4, true, 4, 4}, 4, 1, 4, 60000},
    {"one core of two threads", {2, true, 2, 1}, 1, 1, 2, 500000},
    {"one processor", {1, false, 1, 1}, 1, 1, 0, -1},
    {"one processor of many", {1, true, 16, 8}, 1, 1, 0, -1},
    {"foreign vendor", {4, true, 4, 4, 4, "NotThisOneAt"}, 0, 0, 1, -1},
    {"vendor alike to the last letter but one", {4, true, 4, 4, 4, nullptr}, 0, 0, 1, -1},
    {"no leaf 1", {4, true, 4, 4, 0}, 0, 0, 1, -1},
    {"no leaf 4, so one core a package",
     {4, true, 2, 2, 3},
     2,
     2,
     2,
     9000.0 * 2 / 3 + 500000.0 / 3},
    {"fewer logical than cores", {4, true, 1, 4}, 4, 1, 4, 60000},
    {"no logical processors", {4, true, 0, 1}, 4, 4, 4, 9000},
    {"six cores in an id space of eight", {6, true, 8, 8}, 6, 1, 6, 60000},
    {"six cores of two threads in sixteen ids", {12, true, 16, 8}, 6, 1, 6, 100000},
    {"two processors of a package of sixteen", {2, true, 16, 8}, 1, 1, 2, 500000},
    {"three processors of a package of sixteen", {3, true, 16, 8}, 1, 1, 3, 500000},
    {"two packages of eight cores of two threads", {32, true, 16, 8}, 16, 2, 2, 1484000.0 / 31},
    {"sixty-four cores, all bits of the fields",
     {64, true, 255, 64},
     21,
     1,
     21,
     (60000.0 * 20 * 3 + 500000.0 * 2) / 63},
    {"nothing to count", {0, true, 2, 1}, 1, 1, 0, -1},
};

static FakeProcessor processor(const Machine& m) {
  static char alike[13];
  FakeProcessor p = m.cpu;
  if (!p.vendor) {
    memcpy(alike, LUX_CPU_VENDORS, 12);
    alike[11] ^= 1;
    p.vendor = alike;
  }
  return p;
}

// A as a fraction: numerator over n - 1.
static int64_t numerator(int32_t n, int32_t q, int32_t p) {
  return 9000ll * (p - 1) * (n / p) + 60000ll * (q / p - 1) * (n / q) + 500000ll * (n / q - 1);
}

static int32_t expected(const Machine& m, double cycles, int32_t threads) {
  const int32_t n = m.cpu.available;
  if (m.start_up < 0 || threads >= n + 2) return kNever;
  const __float128 a = __float128(numerator(n, m.cores, m.packages)) / (n - 1);
  const __float128 total = __float128(float(a)) + (threads > 2 ? threads - 2 : 0) * a;
  const __float128 elements = total / cycles;
  return elements >= kNever ? kNever : int32_t(elements);
}

struct Table {
  char letter;
  int32_t (*min_n)(int32_t, int32_t, int32_t);
  const CyclesPerElement* rows;
  int32_t count;
};
static const Table kTables[] = {
    {'s', noxsMinN, sCpeTable, std::size(sCpeTable)},
    {'d', noxdMinN, dCpeTable, std::size(dCpeTable)},
    {'c', noxcMinN, cCpeTable, std::size(cCpeTable)},
    {'z', noxzMinN, zCpeTable, std::size(zCpeTable)},
};

static double cycles(const Table& t, int32_t row, int32_t variant) {
  return variant ? t.rows[row].next_grade : t.rows[row].best_grade;
}

TEST(Topology, IsFoundOnEveryMachine) {
  for (const Machine& m : kMachines) {
    impose(processor(m));
    CalculateLogicConsts();
    EXPECT_EQ(logic_MaxThreads, m.most_threads) << m.what;
    EXPECT_EQ(logic_A_const, float(m.start_up)) << m.what;
    if (m.start_up < 0) continue;
    EXPECT_EQ(HHTs_count, m.cpu.available) << m.what;
    EXPECT_EQ(Core_count, m.cores) << m.what;
    EXPECT_EQ(Proc_count, m.packages) << m.what;
  }
}

TEST(MinN, IsRightInEveryRowOnEveryMachine) {
  for (const Machine& m : kMachines) {
    impose(processor(m));
    for (const Table& t : kTables)
      for (int32_t row = 0; row < t.count; ++row)
        for (const int32_t threads : {-1, 0, 1, 2, 3, 4, 5, 6, 12, 13, 14, 33, 34, 66, INT32_MAX}) {
          for (int32_t variant = 0; variant < 2; ++variant)
            ASSERT_EQ(t.min_n(row, variant, threads), expected(m, cycles(t, row, variant), threads))
                << m.what << " " << t.letter << row << " variant " << variant << " T " << threads;
          for (const int32_t variant : {2, 3, -1})
            ASSERT_EQ(t.min_n(row, variant, threads), kNever);
        }
  }
}

TEST(MinN, GivesTheWorkedFigures) {
  struct {
    FakeProcessor cpu;
    int32_t threads, elements;
  } const rows[] = {{{2, false, 1, 1}, 2, 1952},   {{2, false, 1, 1}, 3, 3904},
                    {{2, false, 1, 1}, 4, kNever}, {{4, true, 4, 4}, 4, 39045},
                    {{4, true, 4, 4}, 6, kNever},  {{2, true, 2, 1}, 2, 108459}};
  for (const auto& [cpu, threads, elements] : rows) {
    impose(cpu);
    EXPECT_EQ(noxsMinN(0, 0, threads), elements);
  }
}

TEST(MinN, RefusesRowsThatDoNotExistAndQuotientsBeyondTheRange) {
  impose({2, false, 1, 1});
  for (const Table& t : kTables)
    for (const int32_t row : {-1, t.count, INT32_MAX, INT32_MIN})
      EXPECT_EQ(t.min_n(row, 0, 2), kNever);
  impose({2000000, false, 1, 1});
  EXPECT_EQ(noxsMinN(0, 1, 400001), 1884816753);  // 9000 * 400000 / 1.91
  EXPECT_EQ(noxsMinN(0, 1, 500001), kNever);
}

TEST(MinN, DoesNotDependOnTheCallersSettings) {
  for (const uint16_t control : {0x007F, 0x0C7F, 0x027F, 0x0B7F}) {
    impose({2000000, false, 1, 1});
    set({control});
    const int32_t got = noxsMinN(0, 1, 400001);
    const Environment after = environment();
    set({});
    EXPECT_EQ(got, 1884816753);  // 9000 * 400000 / 1.91, more bits than a single has
    EXPECT_EQ(after.control, control);
  }
}

// A thread that sees the start-up cost must see the counts that belong to it.
TEST(MinN, FirstCallsMayRace) {
  const Machine& m = kMachines[15];
  constexpr int kThreads = 8, kRounds = 300;
  std::vector<int32_t> got(kThreads);
  std::barrier<> gate(kThreads + 1);
  std::vector<std::thread> threads;
  for (int k = 0; k < kThreads; ++k)
    threads.emplace_back([&, k] {
      for (int round = 0; round < kRounds; ++round) {
        gate.arrive_and_wait();
        got[k] = noxsMinN(0, 0, 20);
        gate.arrive_and_wait();
      }
    });
  const int32_t want = expected(m, sCpeTable[0].best_grade, 20);
  for (int round = 0; round < kRounds; ++round) {
    impose(processor(m));
    gate.arrive_and_wait();
    gate.arrive_and_wait();
    for (const int32_t n : got) EXPECT_EQ(n, want);
  }
  for (std::thread& t : threads) t.join();
}
