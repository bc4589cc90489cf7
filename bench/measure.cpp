// SPDX-License-Identifier: MIT
#include "bench/measure.h"

#include "luxvmk3.h"

#include <cpuid.h>
#include <math.h>
#include <time.h>
#include <x86intrin.h>

#include <algorithm>
#include <limits>
#include <random>
#include <stdexcept>

namespace bench {
namespace {

constexpr uint64_t kSampleTicks = 20000;  // long against the reads of the counter, short against a
// timer interrupt's period
constexpr int kSamplesPerRound = 8;
constexpr double kClockTolerance = 0.01;  // between the calibrations on both sides of a round
constexpr size_t kLeastRounds = 5;
constexpr int kLineBytes = 64, kPageBytes = 4096;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

enum Spread { UNIFORM, LOG, SIGNED };

struct Interval {
  Spread spread;
  double low, high;
};

struct Input {
  std::string_view family;
  bool complex;
  Interval source[2];
  int special_source;  // 1 or 2
  double special;
};

constexpr Input kInputs[] = {
#define INPUT(F, complex, s1, low1, high1, s2, low2, high2, source, special) \
  {#F, complex, {{s1, low1, high1}, {s2, low2, high2}}, source, special},
#define LUX_REAL_INPUT(F, ...) INPUT(F, false, __VA_ARGS__)
#define LUX_COMPLEX_INPUT(F, ...) INPUT(F, true, __VA_ARGS__)
#include "bench/intervals.def"
};

const Input& input_of(const Function& function) {
  const Input* const found =
      std::find_if(std::begin(kInputs), std::end(kInputs), [&](const Input& input) {
        return input.family == function.family && input.complex == function.type.complex();
      });
  if (found == std::end(kInputs)) throw std::runtime_error("no input interval");
  return *found;
}

double draw(const Interval& interval, std::mt19937& random) {
  std::uniform_real_distribution<double> unit(0, 1);
  if (interval.spread == UNIFORM)
    return interval.low + (interval.high - interval.low) * unit(random);
  const double magnitude = interval.low * pow(interval.high / interval.low, unit(random));
  return interval.spread == SIGNED && unit(random) < 0.5 ? -magnitude : magnitude;
}

// Four arrays, a quarter of a page apart modulo a page: no load then waits for a store to an array
// whose address agrees in the low twelve bits.
class Memory {
 public:
  Memory(const Function& function, const Options& options) {
    const bool wide = function.type.width == 8, complex = function.type.complex();
    const size_t parts = size_t(options.n) * (complex ? 2 : 1);
    const size_t stride = (parts * (wide ? 8 : 4) / kPageBytes + 2) * kPageBytes + kPageBytes / 4;
    bytes_.resize(4 * stride + 2 * kPageBytes + size_t(options.offset));
    char* base = bytes_.data();
    base += -reinterpret_cast<uintptr_t>(base) % kPageBytes;
    base += options.offset;
    const Input& input = input_of(function);
    std::mt19937 random(20);
    for (int source = 0; source < 2; ++source) {
      const int32_t every = input.special_source == source + 1 ? options.special_every : 0;
      const Interval& interval = input.source[source];
      char* const to = base + source * stride;
      for (size_t i = 0; i < parts; ++i) {
        const size_t element = complex ? i / 2 : i;
        const bool special = every > 0 && element % size_t(every) == size_t(every) / 2;
        put(to, i, wide, special ? input.special : draw(interval, random));
      }
    }
    arrays = {{base, base + stride}, {base + 2 * stride, base + 3 * stride}, base + stride};
  }

  Arrays arrays;

 private:
  static void put(char* to, size_t index, bool wide, double value) {
    const float narrow = float(value);
    if (wide)
      std::copy_n(reinterpret_cast<const char*>(&value), 8, to + 8 * index);
    else
      std::copy_n(reinterpret_cast<const char*>(&narrow), 4, to + 4 * index);
  }

  std::vector<char> bytes_;
};

double now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
}

template <class Loop>
uint64_t ticks(const Loop& loop, int32_t times) {
  const uint64_t start = __rdtsc();
  loop(times);
  return __rdtsc() - start;
}

struct Samples {
  Figure figure;
  int32_t kept = 0, dropped = 0;  // rounds
};

struct Round {
  double clock;  // ticks per cycle around it
  std::vector<double> ticks_per_call;
};

double middle(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

bool close(double a, double b) { return fabs(a - b) <= kClockTolerance * b; }

// Cycles per call. A round counts when the clock before and after it agree with each other and with
// that of most rounds: a disturbed calibration would show too few cycles.
template <class Loop>
Samples measure_loop(const Loop& loop, int32_t milliseconds) {
  loop(1);
  uint64_t one_call = std::numeric_limits<uint64_t>::max();
  for (int i = 0; i < 5; ++i) one_call = std::min(one_call, ticks(loop, 1));
  one_call = std::max<uint64_t>(one_call, 1);
  const int32_t times = int32_t(std::max<uint64_t>(kSampleTicks / one_call, 1));
  const size_t samples_per_round = size_t(std::clamp<uint64_t>(
      kSamplesPerRound * kSampleTicks / (one_call * times), 1, kSamplesPerRound));
  loop(times);

  Samples samples;
  std::vector<Round> rounds;
  std::vector<double> clocks;
  const double start = now(), limit = milliseconds * 1e-3;
  for (;;) {
    const double spent = now() - start;
    if (spent > 20 * limit || (spent > limit && rounds.size() >= kLeastRounds)) break;
    std::vector<double> taken(samples_per_round);
    const double before = ticks_per_cycle();
    for (double& sample : taken) sample = double(ticks(loop, times)) / times;
    const double after = ticks_per_cycle();
    if (!close(before, after)) {
      ++samples.dropped;
      continue;
    }
    clocks.push_back((before + after) / 2);
    rounds.push_back({clocks.back(), std::move(taken)});
  }
  if (rounds.empty()) return samples;

  const double usual_clock = middle(clocks);
  std::vector<double> cycles;
  for (const Round& round : rounds) {
    if (!close(round.clock, usual_clock)) continue;
    ++samples.kept;
    for (double sample : round.ticks_per_call) cycles.push_back(sample / round.clock);
  }
  samples.dropped += int32_t(rounds.size()) - samples.kept;
  samples.figure = {*std::min_element(cycles.begin(), cycles.end()), middle(cycles)};
  return samples;
}

Figure per_element(Figure figure, int32_t n) { return {figure.minimum / n, figure.median / n}; }

}  // namespace

double ticks_per_cycle() {
  constexpr int32_t kTurns = 200, kLinks = 16;
  uint64_t least = std::numeric_limits<uint64_t>::max();
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

Result measure(const Function& function, const Options& options) {
  Result result;
  result.function = &function;
  result.goal = find_goal(function);
  const Memory memory(function, options);
  const auto take = [&](int32_t len, const auto& loop) {
    const Samples samples = measure_loop(loop, options.milliseconds);
    result.kept += samples.kept;
    result.dropped += samples.dropped;
    return per_element(samples.figure, len);
  };
  const auto take_calls = [&](int32_t len) {
    return take(len, [&](int32_t times) {
      for (; times > 0; --times) function.call(memory.arrays, len);
    });
  };
  result.element = take_calls(options.n);
  result.single_call = take_calls(1);
  const Loop libm = options.compare ? find_libm_loop(function) : nullptr;
  if (libm) {
    result.has_libm = true;
    result.libm = take(options.n, [&](int32_t times) { libm(memory.arrays, options.n, times); });
  }
  return result;
}

std::string processor_name() {
  unsigned words[12];
  if (__get_cpuid_max(0x80000000u, nullptr) < 0x80000004u) return "unknown";
  for (unsigned i = 0; i < 3; ++i)
    __get_cpuid(0x80000002u + i, &words[4 * i], &words[4 * i + 1], &words[4 * i + 2],
                &words[4 * i + 3]);
  const std::string name(reinterpret_cast<const char*>(words), sizeof words);
  return name.c_str() + std::min(name.find_first_not_of(' '), name.size());
}

}  // namespace bench
