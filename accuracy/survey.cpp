// SPDX-License-Identifier: MIT
#include "accuracy/survey.h"

#include "accuracy/promises.h"
#include "accuracy/workers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <mutex>

namespace bench {
namespace {

constexpr size_t kChunk = 2048;

struct Piece {
  size_t first, last;
};

// Pieces of the arguments that one call can take: a scalar is the same throughout.
std::vector<Piece> pieces_of(const Function& function, const std::vector<Argument>& arguments) {
  const auto same_scalar = [&](const Argument& a, const Argument& b) {
    return !function.shape.scalar ||
           std::equal(a.begin() + function.type.parts, a.end(), b.begin() + function.type.parts);
  };
  std::vector<Piece> pieces;
  for (size_t i = 0; i < arguments.size();) {
    const size_t first = i++;
    while (i < arguments.size() && i - first < kChunk &&
           same_scalar(arguments[first], arguments[i]))
      ++i;
    pieces.push_back({first, i});
  }
  return pieces;
}

class Surveyor {
 public:
  Surveyor(const std::vector<const Function*>& grades, const std::vector<Argument>& arguments)
      : grades_(grades),
        arguments_(arguments),
        oracle_(*grades[0]),
        width_(grades[0]->type.width),
        parts_(grades[0]->type.parts),
        results_(Oracle::results(*grades[0])),
        open_zeros_(parts_ == 2 && Oracle::arguments(*grades[0]) == 4) {
    for (std::string& bytes : source_) bytes.resize(kChunk * 16);
    destinations_.resize(grades.size());
    for (auto& both : destinations_)
      for (std::string& bytes : both) bytes.resize(kChunk * 16);
  }

  void measure(const Piece& piece, std::vector<Statistics>& statistics) {
    const size_t len = piece.last - piece.first;
    const int bytes = width_ * parts_;
    for (size_t i = 0; i < len; ++i)
      for (int k = 0; k < Oracle::arguments(*grades_[0]); ++k)
        store_bits(&source_[k / parts_][i * size_t(bytes) + size_t(k % parts_ * width_)],
                   arguments_[piece.first + i][size_t(k)], width_);
    for (size_t g = 0; g < grades_.size(); ++g)
      grades_[g]->call({{source_[0].data(), source_[1].data()},
                        {destinations_[g][0].data(), destinations_[g][1].data()},
                        source_[1].data()},
                       int32_t(len));
    for (size_t i = 0; i < len; ++i) {
      const Argument& argument = arguments_[piece.first + i];
      oracle_.evaluate(argument);
      for (size_t g = 0; g < grades_.size(); ++g) compare(g, i, argument, statistics[g]);
    }
  }

 private:
  void compare(size_t g, size_t i, const Argument& argument, Statistics& statistics) {
    double normwise = 0;
    const bool covered = promised(*grades_[g], argument);
    for (int k = 0; k < results_; ++k) {
      const size_t at = i * size_t(width_ * parts_) + size_t(k % parts_ * width_);
      Case found{argument, load_bits(&destinations_[g][size_t(k / parts_)][at], width_), k, 0};
      Error error = error_of(found.got, width_, oracle_.exact(k));
      if (open_zeros_ && mpfr_zero_p(oracle_.exact(k)) && format_.position(found.got) == 0)
        error = {};
      found.ulp = error.ulp;
      if (!covered) {
        ++statistics.beside;
        statistics.max_beside = std::max(statistics.max_beside, error.ulp);
        continue;
      }
      if (error.mismatch) {
        statistics.add_mismatch(found);
        continue;
      }
      statistics.add(found, width_);
      statistics.not_nearest += error.ulp > 0.5;
      statistics.max_relative = std::max(statistics.max_relative, error.relative);
      statistics.ulp[k].take(error.ulp, argument);
      statistics.relative[k].take(error.relative, argument);
      const mpfr_srcptr exact = oracle_.exact(k);
      if (mpfr_regular_p(exact) && mpfr_get_exp(exact) - 1 < format_.least_exponent())
        statistics.max_subnormal = std::max(statistics.max_subnormal, error.ulp);
      normwise = std::hypot(normwise, error.relative * size_of(oracle_.exact(k)));
    }
    if (parts_ == 2 && covered && normwise > 0) {
      const double magnitude = std::hypot(size_of(oracle_.exact(0)), size_of(oracle_.exact(1)));
      statistics.max_normwise = std::max(statistics.max_normwise, normwise / magnitude);
      statistics.normwise.take(normwise / magnitude, argument);
    }
  }

  // Of an exact part, scaled so that nothing over- or underflows in the long run of a double: both
  // parts by the same power of two.
  double size_of(mpfr_srcptr part) const {
    const mpfr_exp_t shift = std::max(exponent_of(oracle_.exact(0)), exponent_of(oracle_.exact(1)));
    if (!mpfr_number_p(part)) return 0;
    Real scaled(64);
    const mpfr_exp_t least = format_.least_exponent();
    mpfr_set(scaled, part, MPFR_RNDN);
    if (mpfr_zero_p(part) || mpfr_get_exp(part) - 1 < least)
      mpfr_set_si_2exp(scaled, 1, least, MPFR_RNDN);  // what its relative error counts from
    mpfr_mul_2si(scaled, scaled, -shift, MPFR_RNDN);
    return std::fabs(mpfr_get_d(scaled, MPFR_RNDN));
  }
  mpfr_exp_t exponent_of(mpfr_srcptr part) const {
    return mpfr_regular_p(part) ? std::max<mpfr_exp_t>(mpfr_get_exp(part), format_.least_exponent())
                                : format_.least_exponent();
  }

  const std::vector<const Function*>& grades_;
  const std::vector<Argument>& arguments_;
  Oracle oracle_;
  int width_, parts_, results_;
  const NumberFormat& format_ = number_format(width_);
  // The sign of a power's part that is exactly 0 is open, and MPC's is that of no single rule.
  bool open_zeros_;
  std::string source_[2];
  std::vector<std::array<std::string, 2>> destinations_;
};

}  // namespace

std::string range_name(int range) {
  constexpr int kHalf = kRanges / 2;
  const int i = range % kHalf;
  const std::string sign = range < kHalf ? "" : "-";
  const auto end = [&](int k) {
    return kRangeEnds[k] == 0 ? "1" : fmt::format("2^{}", kRangeEnds[k]);
  };
  return i == 0 ? fmt::format("{}(0, {})", sign, end(0))
                : fmt::format("{}[{}, {})", sign, end(i - 1), end(i));
}

int range_of(uint64_t first_argument, int width) {
  const NumberFormat& format = number_format(width);
  const int exponent = int(format.magnitude(first_argument) >> format.mantissa) - format.bias;
  int range = 0;
  while (range < kRanges / 2 - 1 && exponent >= kRangeEnds[range]) ++range;  // infinities, too
  return range + (first_argument & format.sign() ? kRanges / 2 : 0);
}

int envelope_bin(uint64_t first_argument, int width) {
  const NumberFormat& format = number_format(width);
  const double all = double(format.infinity());
  const double at = (double(format.position(first_argument)) / all + 1) / 2;
  return std::clamp(int(at * kEnvelope), 0, kEnvelope - 1);
}

static bool worse(const Case& a, const Case& b) {
  return a.ulp != b.ulp ? a.ulp > b.ulp : a.argument < b.argument;
}

void Statistics::add_worst(const Case& found) {
  if (found.ulp == 0 || found.ulp < threshold()) return;
  const auto same = std::find_if(worst.begin(), worst.end(),
                                 [&](const Case& c) { return c.argument == found.argument; });
  if (same != worst.end()) {
    if (!worse(found, *same)) return;
    worst.erase(same);
  }
  worst.insert(std::lower_bound(worst.begin(), worst.end(), found, worse), found);
  if (int(worst.size()) > kWorst) worst.pop_back();
}

void Statistics::add_mismatch(const Case& found) {
  ++mismatches;
  if (int(mismatched.size()) < kWorst) mismatched.push_back(found);
}

void Statistics::add(const Case& found, int width) {
  ++count;
  sum += found.ulp;
  int i = 0;
  while (i < kClasses - 1 && found.ulp > kHistogram[i]) ++i;
  ++classes[i];
  Range& range = ranges[range_of(found.argument[0], width)];
  ++range.count;
  range.sum += found.ulp;
  if (found.ulp > range.max) range.max = found.ulp, range.worst = found.argument;
  float& bin = envelope[size_t(envelope_bin(found.argument[0], width))];
  bin = std::max(bin, float(found.ulp));
  add_worst(found);
}

void Statistics::merge(const Statistics& other) {
  count += other.count;
  mismatches += other.mismatches;
  beside += other.beside;
  not_nearest += other.not_nearest;
  sum += other.sum;
  max_relative = std::max(max_relative, other.max_relative);
  max_normwise = std::max(max_normwise, other.max_normwise);
  for (int k = 0; k < 2; ++k) {
    ulp[k].take(other.ulp[k]);
    relative[k].take(other.relative[k]);
  }
  normwise.take(other.normwise);
  max_beside = std::max(max_beside, other.max_beside);
  max_subnormal = std::max(max_subnormal, other.max_subnormal);
  for (int i = 0; i < kClasses; ++i) classes[i] += other.classes[i];
  for (int i = 0; i < kRanges; ++i) {
    Range& range = ranges[i];
    const Range& its = other.ranges[i];
    range.count += its.count;
    range.sum += its.sum;
    if (its.max > range.max || (its.max == range.max && its.max > 0 && its.worst < range.worst))
      range.max = its.max, range.worst = its.worst;
  }
  for (size_t i = 0; i < kEnvelope; ++i) envelope[i] = std::max(envelope[i], other.envelope[i]);
  for (const Case& found : other.worst) add_worst(found);
  for (const Case& found : other.mismatched)
    if (int(mismatched.size()) < kWorst) mismatched.push_back(found);
}

std::vector<Statistics> survey(const std::vector<const Function*>& grades,
                               const std::vector<Argument>& arguments, int threads,
                               const Advance& advance, const std::atomic<bool>& stop) {
  const std::vector<Piece> pieces = pieces_of(*grades[0], arguments);
  std::vector<Statistics> total(grades.size());
  std::atomic<size_t> next{0};
  std::mutex mutex;
  uint64_t done = 0;
  on_threads(threads, [&](const std::atomic<bool>& failed) {
    Surveyor surveyor(grades, arguments);
    std::vector<Statistics> own(grades.size());
    for (size_t i; !stop && !failed && (i = next++) < pieces.size();) {
      surveyor.measure(pieces[i], own);
      const std::lock_guard lock(mutex);
      done += pieces[i].last - pieces[i].first;
      if (advance) advance(done, arguments.size());
    }
    const std::lock_guard lock(mutex);
    for (size_t g = 0; g < grades.size(); ++g) total[g].merge(own[g]);
  });
  return total;
}

}  // namespace bench
