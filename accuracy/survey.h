// SPDX-License-Identifier: MIT
//
// How far a function's results are from the exact values, over many arguments.
#ifndef LUX_ACCURACY_SURVEY_H
#define LUX_ACCURACY_SURVEY_H

#include "accuracy/arguments.h"

#include <atomic>
#include <functional>
#include <vector>

namespace bench {

// One result beside its exact value.
struct Case {
  Argument argument{};
  uint64_t got = 0;
  int result = 0;  // which real number of the result
  double ulp = 0;
};

// Upper ends of the histogram's classes, in units of the last place; what is beyond them is in one
// more class.
constexpr double kHistogram[] = {0.1, 0.2, 0.3, 0.4, 0.5, 0.51, 0.55, 0.6, 0.7,
                                 0.8, 0.9, 1,   2,   4,   16,   256,  8192};
constexpr int kClasses = int(std::size(kHistogram)) + 1;
// Ranges of the first argument by magnitude, from their upper ends as powers of two; the negative
// arguments have the same ones.
constexpr int kRangeEnds[] = {-1022, -126, -64, -16, -4, 0, 2, 6, 16, 64, 128, 1024};
constexpr int kRanges = 2 * int(std::size(kRangeEnds));
std::string range_name(int range);
constexpr int kWorst = 10;
// Intervals of the argument line in which the largest error is kept, for plots.
constexpr int kEnvelope = 512;

// The largest error of a kind and where it is.
struct Largest {
  double error = 0;
  Argument argument{};

  void take(double other_error, const Argument& other_argument) {
    if (other_error > error || (other_error == error && error > 0 && other_argument < argument))
      error = other_error, argument = other_argument;
  }
  void take(const Largest& other) { take(other.error, other.argument); }
};

struct Statistics {
  uint64_t count = 0, mismatches = 0, beside = 0;
  uint64_t not_nearest = 0;  // results further from the exact value than half a unit
  double sum = 0, max_relative = 0, max_normwise = 0;
  Largest ulp[2], relative[2];  // of each real number of the result
  Largest normwise;
  double max_beside = 0;     // where the function's documented exceptions lie
  double max_subnormal = 0;  // over results below the least normal number
  uint64_t classes[kClasses] = {};
  struct Range {
    uint64_t count = 0;
    double sum = 0, max = 0;
    Argument worst{};
  } ranges[kRanges];
  std::vector<float> envelope = std::vector<float>(kEnvelope, -1);  // -1: no argument there
  std::vector<Case> worst;       // at most kWorst of different arguments, worst first
  std::vector<Case> mismatched;  // the first kWorst

  double max_ulp() const { return worst.empty() ? 0 : worst[0].ulp; }
  double mean() const { return count ? sum / double(count) : 0; }
  // Errors at or above this may belong among the worst.
  double threshold() const { return int(worst.size()) < kWorst ? 0 : worst.back().ulp; }

  void add(const Case& found, int width);
  void add_worst(const Case& found);
  void add_mismatch(const Case& found);
  void merge(const Statistics& other);
};

int range_of(uint64_t first_argument, int width);
int envelope_bin(uint64_t first_argument, int width);

// The results of one function and type in all its grades: they share the arguments and the exact
// values. Called with how many of the arguments are done; a set `stop` ends the work early.
using Advance = std::function<void(uint64_t done, uint64_t of)>;
std::vector<Statistics> survey(const std::vector<const Function*>& grades,
                               const std::vector<Argument>& arguments, int threads,
                               const Advance& advance, const std::atomic<bool>& stop);

}  // namespace bench

#endif
