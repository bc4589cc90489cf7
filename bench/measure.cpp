// SPDX-License-Identifier: MIT
#include "bench/measure.h"

#include <math.h>
#include <time.h>
#include <immintrin.h>
#include <x86intrin.h>

#include <algorithm>
#include <vector>

namespace bench {
namespace {

constexpr uint64_t kSampleTicks = 20000;  // long against the reads of the counter, short against a
// timer interrupt's period
constexpr int kSamplesPerRound = 8;
constexpr double kClockTolerance = 0.01;  // between the calibrations on both sides of a round
constexpr size_t kLeastRounds = 5;

using Loop = std::function<void(int32_t times)>;

double now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
}

__attribute__((target("avx"))) void clear_by_avx() { _mm256_zeroupper(); }

void clear_upper_halves() {
  static const bool has_them = __builtin_cpu_supports("avx");
  if (has_them) clear_by_avx();
}

uint64_t ticks(const Loop& loop, int32_t times) {
  clear_upper_halves();
  const uint64_t start = __rdtsc();
  loop(times);
  return __rdtsc() - start;
}

struct Round {
  double clock;  // ticks per cycle around it
  std::vector<double> ticks_per_call;
};

double middle(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

bool close(double a, double b) { return fabs(a - b) <= kClockTolerance * b; }

// A round counts when the clock before and after it agree with that of most rounds: a disturbed
// calibration would show too few cycles.
Figure summarize(const std::vector<Round>& rounds) {
  Figure figure;
  if (rounds.empty()) return figure;
  std::vector<double> clocks, cycles;
  for (const Round& round : rounds) clocks.push_back(round.clock);
  const double usual_clock = middle(clocks);
  for (const Round& round : rounds) {
    if (!close(round.clock, usual_clock)) continue;
    ++figure.kept;
    for (double sample : round.ticks_per_call) cycles.push_back(sample / round.clock);
  }
  figure.dropped = int32_t(rounds.size()) - figure.kept;
  figure.minimum = *std::min_element(cycles.begin(), cycles.end());
  figure.median = middle(cycles);
  return figure;
}

}  // namespace

Figure measure(const Loop& loop, int32_t milliseconds) {
  loop(1);
  uint64_t one_call = std::numeric_limits<uint64_t>::max();
  for (int i = 0; i < 5; ++i) one_call = std::min(one_call, ticks(loop, 1));
  one_call = std::max<uint64_t>(one_call, 1);
  const int32_t times = int32_t(std::max<uint64_t>(kSampleTicks / one_call, 1));
  const size_t samples_per_round = size_t(std::clamp<uint64_t>(
      kSamplesPerRound * kSampleTicks / (one_call * uint64_t(times)), 1, kSamplesPerRound));
  loop(times);

  std::vector<Round> rounds;
  int32_t unsteady = 0;
  const double start = now(), limit = milliseconds * 1e-3;
  for (;;) {
    const double spent = now() - start;
    if (spent > 20 * limit || (spent > limit && rounds.size() >= kLeastRounds)) break;
    std::vector<double> taken(samples_per_round);
    const double before = ticks_per_cycle();
    for (double& sample : taken) sample = double(ticks(loop, times)) / times;
    const double after = ticks_per_cycle();
    if (close(before, after))
      rounds.push_back({(before + after) / 2, std::move(taken)});
    else
      ++unsteady;
  }
  Figure figure = summarize(rounds);
  figure.dropped += unsteady;
  return figure;
}

double ticks_per_cycle() {
  constexpr int32_t kTurns = 200, kLinks = 16;
  uint64_t least = std::numeric_limits<uint64_t>::max();
  clear_upper_halves();
  for (int i = 0; i < 3; ++i) {
    int32_t turns = kTurns, link = 0;
    const uint64_t start = __rdtsc();
    // Each exclusive or waits for the one before it, and no processor merges two of them. With one
    // link a turn the loop would measure the fetch of taken branches, which a sibling thread
    // halves.
    asm volatile(
        ".p2align 5\n1:\t"
        ".rept %c3\n\txor %2, %1\n\t.endr\n\t"
        "dec %0\n\tjnz 1b"
        : "+r"(turns), "+r"(link)
        : "r"(1), "i"(kLinks)
        : "cc");
    least = std::min(least, __rdtsc() - start);
  }
  return double(least) / (kTurns * kLinks);
}

}  // namespace bench
