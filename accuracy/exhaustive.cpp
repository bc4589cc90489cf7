// SPDX-License-Identifier: MIT
#include "accuracy/exhaustive.h"
#include "accuracy/workers.h"
#include "catalog/require.h"

#include <fmt/format.h>
#include <math.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstring>
#include <mutex>
#include <stdexcept>

namespace bench {
namespace {

constexpr uint32_t kBlock = 4096, kSlice = uint32_t((uint64_t(1) << 32) / Exhaustion::kSlices);
constexpr long double kMargin = 0x1p-24L;  // units in the last place

using Wide = long double;
using Quick = void (*)(Wide x, Wide* exact);

template <Wide (*function)(Wide)>
void quick(Wide x, Wide* exact) {
  exact[0] = function(x);
}

void reciprocal(Wide x, Wide* exact) { exact[0] = 1 / x; }
void reciprocal_root(Wide x, Wide* exact) { exact[0] = 1 / sqrtl(x); }
void reciprocal_cube_root(Wide x, Wide* exact) { exact[0] = 1 / cbrtl(x); }
void sine_and_cosine(Wide x, Wide* exact) { sincosl(x, exact, exact + 1); }
void whole_and_fraction(Wide x, Wide* exact) { exact[1] = modfl(x, exact); }

constexpr struct {
  std::string_view family;
  Quick quick;
} kRows[] = {
#define LUX_QUICK(F, function) {#F, function},
#include "core/functions.def"
};

constexpr Quick find_quick(std::string_view family) {
  for (const auto& row : kRows)
    if (row.family == family) return row.quick;
  return nullptr;
}

constexpr bool runs_over_all(std::string_view type, const Shape& shape) {
  return type == "32f" && shape.sources == 1 && !shape.scalar;
}

#define LACKING(F, type) #F " " #type ": no LUX_QUICK in core/functions.def"
#define LUX_GRADED(F, type, grade, letter, shape, row, variant)                                \
  LUX_REQUIRE(                                                                                 \
      variant != 0 || find_quick(#F) || !runs_over_all(#type, catalog_detail::kShape_##shape), \
      LACKING(F, type));
#define LUX_EXACT(F, type, letter, shape, returns)                                     \
  LUX_REQUIRE(find_quick(#F) || !runs_over_all(#type, catalog_detail::kShape_##shape), \
              LACKING(F, type));
#include "core/functions.def"

// By exponent field of a single: the binade's least number, and how many units in the last place
// make 1.
struct Scale {
  double binade[256], units[256];
  Scale() {
    for (int field = 0; field < 256; ++field) {
      const int exponent = std::max(field, 1) - 127;
      binade[field] = ldexp(1, exponent);
      units[field] = ldexp(1, 23 - exponent);
    }
  }
};

// The class of the histogram. Nearly all errors are below 1 and spread evenly, so that branches
// would be guessed wrong: integers are compared instead, in steps of 2^-24, which the quick values
// allow.
class Classes {
 public:
  Classes() {
    int c = 0;
    for (int i = 0; i <= 1 << (24 - kStepBits); ++i) {
      if (edge(c) < i << kStepBits) ++c;
      parts_[i] = {c, edge(c)};
    }
  }
  int of(Wide ulp) const {
    if (ulp <= 1) return of_steps(int32_t(lrintl(ulp * 0x1p24L)));
    int c = kBelowOne;
    while (c < kClasses - 1 && ulp > kHistogram[c]) ++c;
    return c;
  }
  int of_steps(int32_t steps) const {
    const Part& part = parts_[steps >> kStepBits];
    return part.first + (steps > part.edge);
  }

 private:
  static constexpr int kBelowOne =
      int(std::find(std::begin(kHistogram), std::end(kHistogram), 1) - std::begin(kHistogram)) + 1;
  // So narrow that none has more than one class's end inside.
  static constexpr int kStepBits = 17;
  struct Part {
    int first;
    int32_t edge;  // where the first class ends
  };

  static int32_t edge(int c) { return int32_t(kHistogram[c] * 0x1p24); }

  Part parts_[(1 << (24 - kStepBits)) + 1];
};

// The tenth worst error of a grade as far as any thread knows it: only what reaches it needs MPFR.
class Floor {
 public:
  double raise(double to) {
    double known = value_.load(std::memory_order_relaxed);
    while (known < to && !value_.compare_exchange_weak(known, to, std::memory_order_relaxed)) {
    }
    return std::max(known, to);
  }

 private:
  std::atomic<double> value_{0};
};

// A long double as it stands in memory.
struct Parts {
  uint64_t significand;
  int exponent;  // 16384 for infinities and NaNs
  bool negative;
  bool is_zero() const { return significand == 0; }
  bool is_nan() const { return exponent == 16384 && significand << 1; }
};
Parts parts_of(const Wide& x) {
  Parts parts;
  uint16_t top;
  memcpy(&parts.significand, &x, 8);
  memcpy(&top, reinterpret_cast<const char*>(&x) + 8, 2);
  parts.exponent = (top & 0x7FFF) - 16383;
  parts.negative = top >> 15;
  return parts;
}

// The curve through some of a block's exact values, which gives the others for a tenth of the time
// that the C library takes. The arguments of a block are evenly spaced. Six nodes spread like
// Chebyshev's make the error a wave that is largest near the middle of each two neighbours and at the
// ends: there it is measured, and a curve that is off by more than an eighth of the margin is none.
class Curve {
 public:
  // value(i): of argument i
  template <class Value>
  bool fit(Value value) {
    Wide c[kNodes], powers[kNodes] = {};
    for (int k = 0; k < kNodes; ++k) c[k] = value(kNode[k]);
    for (int k = 1; k < kNodes; ++k)
      for (int i = kNodes - 1; i >= k; --i)
        c[i] = (c[i] - c[i - 1]) / int32_t(kNode[i] - kNode[i - k]);
    // From divided differences to powers.
    for (int k = kNodes - 1; k >= 0; --k) {
      for (int i = kNodes - 1; i > 0; --i) powers[i] = powers[i - 1] - place(kNode[k]) * powers[i];
      powers[0] = c[k] - place(kNode[k]) * powers[0];
    }
    std::copy_n(powers, kNodes, power_);
    return std::ranges::all_of(kProbe, [&](uint32_t i) {
      const Wide exact = value(i), unit = fmaxl(fabsl(exact) * 0x1p-24L, 0x1p-149L);
      return fabsl(of(i) - exact) <= unit * (kMargin / 8);
    });
  }

  // The last rounding of a coefficient, to a double, counts 2^-29 of a single's last place.
  Wide of(uint32_t i) const {
    const Wide t = place(i);
    const double* const p = power_;
    return ((((p[5] * t + p[4]) * t + p[3]) * t + p[2]) * t + p[1]) * t + p[0];
  }

  // Where a block is looked at before anything is said of all of it: at both ends, too.
  // 2048 - 2048 cos(k pi/6)
  static constexpr uint32_t kProbe[] = {0, 274, 1024, 2048, 3072, 3822, kBlock - 1};

 private:
  static constexpr int kNodes = 6;
  // 2048 - 2048 cos((2 k + 1) pi/12)
  static constexpr uint32_t kNode[kNodes] = {70, 600, 1518, 2578, 3496, 4026};

  static int32_t place(uint32_t i) { return int32_t(i) - int32_t(kBlock / 2); }

  double power_[kNodes];
};

class Exhauster {
 public:
  Exhauster(const std::vector<const Function*>& grades, std::vector<Floor>& floors)
      : grades_(grades),
        floors_(floors),
        quick_(find_quick(grades[0]->family)),
        oracle_(*grades[0]) {
    results_ = grades[0]->shape.destinations;
    outputs_.resize(grades.size());
    for (auto& both : outputs_)
      for (auto& output : both) output.resize(kBlock);
  }

  // Adds to `own`, which starts with the ten worst of what is known already.
  void measure(uint32_t slice, std::vector<Statistics>& own) {
    for (uint32_t block = 0; block < kSlice / kBlock; ++block) {
      const uint32_t first = slice * kSlice + block * kBlock;
      compute(first);
      for (size_t g = 0; g < grades_.size(); ++g)
        for (int k = 0; k < results_; ++k) compare(g, k, first, own[g]);
    }
  }

 private:
  // How the exact values of a block are known.
  enum Way { kOneByOne, kAlongCurve, kConstant };

  // What one result adds for a block.
  struct Sums {
    Statistics& statistics;
    Statistics::Range part;
    Wide sum, largest;
    double floor, relative_step;
  };

  Wide quick(int k, uint32_t i) const {
    Wide exact[2] = {0, 0};
    quick_(std::bit_cast<float>(input_[i]), exact);
    return exact[k];
  }

  // Where a function is a NaN, infinite or zero, it is that over whole intervals: all of a block is
  // as both its ends.
  bool is_constant(int k) const {
    if (number_format(4).is_nan(input_[kBlock - 1])) return false;
    const Wide first = quick(k, 0);
    const Parts parts = parts_of(first);
    if (parts.exponent < 16384 && !parts.is_zero()) return false;
    return std::ranges::all_of(Curve::kProbe, [&](uint32_t i) {
      const Wide value = quick(k, i);
      const Parts other = parts_of(value);
      return parts.is_nan() ? other.is_nan() : value == first && other.negative == parts.negative;
    });
  }

  void compute(uint32_t first) {
    for (uint32_t i = 0; i < kBlock; ++i) input_[i] = first + i;
    for (size_t g = 0; g < grades_.size(); ++g)
      grades_[g]->call({{input_, nullptr}, {outputs_[g][0].data(), outputs_[g][1].data()}, nullptr},
                       kBlock);
    for (int k = 0; k < results_; ++k) {
      // The rounding functions have steps.
      if (!grades_[0]->graded())
        way_[k] = kOneByOne;
      else if (is_constant(k))
        way_[k] = kConstant;
      else if (curve_[k].fit([&](uint32_t i) { return quick(k, i); }))
        way_[k] = kAlongCurve;
      else
        way_[k] = kOneByOne;
    }
    if (std::find(way_, way_ + results_, kOneByOne) != way_ + results_)
      for (uint32_t i = 0; i < kBlock; ++i) {
        Wide exact[2] = {0, 0};
        quick_(std::bit_cast<float>(input_[i]), exact);
        exact_[0][i] = exact[0];
        exact_[1][i] = exact[1];
      }
    check(first);
  }

  Wide known(int k, uint32_t i) const {
    return way_[k] == kAlongCurve ? curve_[k].of(i)
           : way_[k] == kConstant ? quick(k, 0)
                                  : exact_[k][i];
  }

  // That the known values are as good as they are taken to be.
  void check(uint32_t first) {
    // A different place of every block: neighbours have much in common.
    const uint32_t i = (first / kBlock * 2654435761u) >> 20;
    if (number_format(4).is_nan(input_[i])) return;
    oracle_.evaluate({input_[i]});
    for (int k = 0; k < results_; ++k) {
      const mpfr_srcptr exact = oracle_.exact(k);
      if (!mpfr_regular_p(exact) || mpfr_get_exp(exact) > 128) continue;
      Real distance(96);
      mpfr_set_ld(distance, known(k, i), MPFR_RNDN);
      mpfr_sub(distance, distance, exact, MPFR_RNDA);
      mpfr_mul_2si(distance, distance, 24 - std::max<mpfr_exp_t>(mpfr_get_exp(exact), -125),
                   MPFR_RNDA);
      if (!(fabsl(mpfr_get_ld(distance, MPFR_RNDA)) <= kMargin))
        throw std::runtime_error(
            fmt::format("the C library's long double value for {} of 0x{:08X} is off by more than "
                        "is allowed for",
                        grades_[0]->family, input_[i]));
    }
  }

  void compare(size_t g, int k, uint32_t first, Statistics& statistics) {
    const std::vector<uint32_t>& got = outputs_[g][size_t(k)];
    Sums sums{statistics,
              {},
              0,
              0,
              floors_[g].raise(statistics.threshold()),
              statistics.relative[k].error * 0x1p23};
    if (way_[k] == kConstant)
      compare_constant(g, k, got, sums);
    else if (way_[k] == kAlongCurve)
      compare_along_curve(g, k, got, sums);
    else
      for (uint32_t i = 0; i < kBlock; ++i) compare_one(g, k, i, got[i], exact_[k][i], sums);
    const Statistics::Range& part = sums.part;
    const double largest = double(sums.largest);
    statistics.count += part.count;
    statistics.sum += double(sums.sum);
    Statistics::Range& range = statistics.ranges[range_of(first, 4)];
    range.count += part.count;
    range.sum += double(sums.sum);
    statistics.ulp[k].take(largest, part.worst);
    if (largest > range.max) range.max = largest, range.worst = part.worst;
    if (part.count > 0) {
      float& bin = statistics.envelope[size_t(envelope_bin(first, 4))];
      bin = std::max(bin, float(largest));
    }
  }

  void compare_constant(size_t g, int k, const std::vector<uint32_t>& got, Sums& sums) {
    const Wide exact = quick(k, 0);
    const bool all_equal = std::ranges::all_of(got, [&](uint32_t one) { return one == got[0]; });
    if (all_equal && same_limit(got[0], parts_of(exact))) {
      sums.part.count += kBlock;
      sums.statistics.classes[0] += kBlock;
    } else {
      for (uint32_t i = 0; i < kBlock; ++i) compare_one(g, k, i, got[i], exact, sums);
    }
  }

  // Errors up to one unit, in steps of 2^-24 of it; what is anything else goes one by one. The unit
  // is that of the result's binade: with neighbours on both sides there, the exact value is in the
  // same one.
  void compare_along_curve(size_t g, int k, const std::vector<uint32_t>& got, Sums& sums) {
    constexpr int32_t kHalf = 1 << 23, kDoubt = 3;  // twice the margin, and a rounding
    const auto steps_of = [](double ulp) { return int32_t(std::min(ulp, 2.0) * 0x1p24); };
    const Curve& curve = curve_[k];
    const auto bound = [&] {
      return std::min({steps_of(sums.floor) - kDoubt, steps_of(sums.relative_step), 1 << 24});
    };
    int32_t usual = bound(), largest = 0;
    uint32_t one_by_one = 0, not_nearest = 0, counts[2][kClasses] = {};
    double sum = 0;
    for (uint32_t i = 0; i < kBlock; ++i) {
      const uint32_t bits = got[i], field = bits >> 23 & 0xFF, fraction = bits & 0x7FFFFF;
      const Wide exact = curve.of(i);
      const double ulp =
          double(fabsl(Wide(std::bit_cast<float>(bits)) - exact)) * scale_.units[field];
      const int32_t steps = ulp < 2 ? int32_t(lrint(ulp * 0x1p24)) : 1 << 25;
      const bool inside =
          fraction - 1 < 0x7FFFFE || (fraction == 0 && fabsl(exact) >= scale_.binade[field]);
      if (inside & (field - 1 < 254) & (steps < usual) & (abs(steps - kHalf) > kDoubt)) {
        sum += ulp;
        ++counts[i & 1][classes_.of_steps(steps)];
        not_nearest += steps > kHalf;
        if (steps > largest) {
          largest = steps;
          if (ulp > sums.largest) {
            sums.largest = ulp;
            sums.part.worst = {input_[i]};
          }
        }
      } else {
        compare_one(g, k, i, bits, exact, sums);
        usual = bound();
        ++one_by_one;
      }
    }
    sums.sum += sum;
    sums.part.count += kBlock - one_by_one;
    sums.statistics.not_nearest += not_nearest;
    for (int c = 0; c < kClasses; ++c) sums.statistics.classes[c] += counts[0][c] + counts[1][c];
  }

  void compare_one(size_t g, int k, uint32_t i, uint32_t got, Wide exact, Sums& sums) {
    Statistics& statistics = sums.statistics;
    const Parts parts = parts_of(exact);
    const uint32_t field = got >> 23 & 0xFF;
    Wide ulp = 0;
    bool settled = true;
    // No arithmetic on what is infinite or no number: it takes the x87 unit a hundred cycles.
    if (field == 255 || parts.exponent > 127 || parts.is_zero()) {
      if (number_format(4).is_nan(input_[i]) && number_format(4).is_nan(got)) return;
      settled = same_limit(got, parts);
    } else {
      const Wide off = fabsl(Wide(std::bit_cast<float>(got)) - exact);
      ulp = off * scale_.units[field];
      // The unit is that of the exact value's binade.
      if (fabsl(exact) < scale_.binade[field])
        ulp *= field > 1 ? 2 : 1;
      else if (field < 254 && fabsl(exact) >= 2 * scale_.binade[field])
        ulp /= 2;
      if (parts.exponent < -126)
        statistics.max_subnormal = std::max(statistics.max_subnormal, double(ulp));
      // Whether a result is the nearest single is known exactly, too.
      settled = ulp == 0 || (ulp + 2 * kMargin < sums.floor && fabsl(ulp - 0.5L) > 2 * kMargin);
      if (settled && ulp > sums.relative_step) {  // a unit is at most 2^-23 of the value
        const Wide relative = off / fmaxl(fabsl(exact), 0x1p-126L);
        statistics.max_relative = std::max(statistics.max_relative, double(relative));
        statistics.relative[k].take(double(relative), {input_[i]});
        sums.relative_step = statistics.relative[k].error * 0x1p23;
      }
    }
    if (!settled) {
      ulp = measure_exactly(Case{{input_[i]}, got, k, 0}, statistics);
      if (ulp < 0) return;
      sums.floor = floors_[g].raise(statistics.threshold());
    }
    ++sums.part.count;
    statistics.not_nearest += ulp > 0.5L;
    sums.sum += ulp;
    ++statistics.classes[classes_.of(ulp)];
    if (ulp > sums.largest) {
      sums.largest = ulp;
      sums.part.worst = {input_[i]};
    }
  }

  // Both NaN, both zero, or both infinite by the same sign: no distance.
  static bool same_limit(uint32_t got, const Parts& exact) {
    if (exact.is_nan()) return number_format(4).is_nan(got);
    if (exact.negative != bool(got >> 31)) return false;
    return exact.is_zero() ? got << 1 == 0
                           : number_format(4).is_infinite(got) && exact.exponent > 127;
  }

  // The error with MPFR, or below 0 when there is none to count.
  double measure_exactly(Case found, Statistics& statistics) {
    const uint64_t argument = found.argument[0];
    if (number_format(4).is_nan(argument)) {
      if (!number_format(4).is_nan(found.got)) statistics.add_mismatch(found);
      return -1;
    }
    oracle_.evaluate(found.argument);
    const mpfr_srcptr exact = oracle_.exact(found.result);
    const Error error = error_of(found.got, 4, exact);
    if (error.mismatch) {
      statistics.add_mismatch(found);
      return -1;
    }
    found.ulp = error.ulp;
    statistics.add_worst(found);
    statistics.max_relative = std::max(statistics.max_relative, error.relative);
    statistics.relative[found.result].take(error.relative, found.argument);
    if (mpfr_regular_p(exact) && mpfr_get_exp(exact) < -125)
      statistics.max_subnormal = std::max(statistics.max_subnormal, error.ulp);
    return error.ulp;
  }

  const std::vector<const Function*>& grades_;
  std::vector<Floor>& floors_;
  Quick quick_;
  Oracle oracle_;
  int results_;
  const Scale scale_;
  const Classes classes_;
  Way way_[2];
  Curve curve_[2];
  uint32_t input_[kBlock];
  std::vector<std::array<std::vector<uint32_t>, 2>> outputs_;
  Wide exact_[2][kBlock];
};

}  // namespace

bool has_exhaustive_run(const Function& function) {
  return runs_over_all(function.type.name, function.shape);
}

void exhaust(const std::vector<const Function*>& grades, Exhaustion& exhaustion, int threads,
             const Advance& advance, const std::function<void()>& save,
             const std::atomic<bool>& stop) {
  using Clock = std::chrono::steady_clock;
  exhaustion.statistics.resize(grades.size());
  std::vector<uint32_t> left;
  for (uint32_t slice = 0; slice < Exhaustion::kSlices; ++slice)
    // From 1 on, where errors are large and the ten worst soon known, in far-apart slices: what is
    // left then takes about as long as what was done.
    if (const uint32_t mixed = (254 + slice * 397) % Exhaustion::kSlices; !exhaustion.done[mixed])
      left.push_back(mixed);
  uint64_t finished = Exhaustion::kSlices - left.size();
  std::atomic<size_t> next{0};
  std::vector<Floor> floors(grades.size());
  std::mutex mutex;
  auto saved = Clock::now();
  try {
    on_threads(threads, [&](const std::atomic<bool>& failed) {
      const auto exhauster = std::make_unique<Exhauster>(grades, floors);
      for (size_t i; !stop && !failed && (i = next++) < left.size();) {
        std::vector<Statistics> own(grades.size());
        {
          const std::lock_guard lock(mutex);
          for (size_t g = 0; g < grades.size(); ++g) {
            own[g].worst = exhaustion.statistics[g].worst;
            own[g].max_relative = exhaustion.statistics[g].max_relative;
            std::copy_n(exhaustion.statistics[g].relative, 2, own[g].relative);
          }
        }
        exhauster->measure(left[i], own);
        const std::lock_guard lock(mutex);
        for (size_t g = 0; g < grades.size(); ++g) exhaustion.statistics[g].merge(own[g]);
        exhaustion.done[left[i]] = true;
        if (advance) advance(++finished, Exhaustion::kSlices);
        if (save && Clock::now() - saved > std::chrono::seconds(5)) {
          save();
          saved = Clock::now();
        }
      }
    });
  } catch (...) {
    if (save) save();
    throw;
  }
  if (save) save();
}

}  // namespace bench
