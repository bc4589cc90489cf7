// SPDX-License-Identifier: MIT
#include "cli/curves.h"

#include "accuracy/promises.h"
#include "accuracy/workers.h"
#include "catalog/intervals.h"
#include "catalog/random.h"
#include "cli/numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>

constexpr int kColumns = 360;  // of an error curve

// ---- The axis --------------------------------------------------------------------------------

namespace {

// From 0 to 1 along the first argument. Numbers stand at equal distances on the line of positions,
// which shows all exponents of both signs.
struct Axis {
  enum Scale { kLinear, kLogarithmic, kPositions } scale;
  double low, high;
  int width;

  double position(double x) const {
    return double(number_format(width).position(bench::nearest(x, width))) /
           double(number_format(width).infinity());
  }
  double number(double share) const {
    if (scale == kLinear) return low * (1 - share) + high * share;
    if (scale == kLogarithmic) return low * std::pow(high / low, share);
    const NumberFormat& format = number_format(width);
    const double at = (position(low) * (1 - share) + position(high) * share);
    const auto most = int64_t(format.infinity()) - 1;
    const auto whole = std::clamp(int64_t(at * double(format.infinity())), -most, most);
    return as_double(format.at_position(whole), width);
  }
  // Where the picture has it.
  double place(double share) const {
    return scale == kPositions ? position(low) * (1 - share) + position(high) * share
                               : number(share);
  }
};

}  // namespace

static double largest(int width) { return as_double(number_format(width).infinity() - 1, width); }

static Axis axis_of(const Function& function, const std::optional<Range>& range) {
  const int width = function.type.width;
  const bench::Interval& typical = bench::typical_of(function).source[0];
  Axis axis{Axis::kLinear, typical.low, typical.high, width};
  if (range) {
    axis.low = std::max(range->low, -largest(width));
    axis.high = std::min(range->high, largest(width));
  } else if (typical.spread != bench::UNIFORM) {
    axis.scale = Axis::kLogarithmic;
    return axis;
  }
  constexpr double kWide = 1000, kFar = 1e6;
  const double ends[] = {std::fabs(axis.low), std::fabs(axis.high)};
  if (axis.low > 0 && axis.high / axis.low > kWide)
    axis.scale = Axis::kLogarithmic;
  else if (std::max(ends[0], ends[1]) > kFar && axis.low <= 0)
    axis.scale = Axis::kPositions;
  return axis;
}

// Of a narrow picture those around 0 would lie on each other.
static std::string position_tics(const Axis& axis, bool narrow) {
  std::string tics = "\"0\" 0";
  const int exponent = axis.width == 4 ? 19 : 150;
  for (const int power : {exponent, 0, -exponent}) {
    if (power < 0 && narrow) continue;
    const double x = std::pow(10.0, power);
    const std::string text = power ? fmt::format("10^{{{}}}", power) : "1";
    tics += fmt::format(", \"{0}\" {1:.5f}, \"-{0}\" -{1:.5f}", text, axis.position(x));
  }
  return tics;
}

static Panel panel_over(const Axis& axis, const Function& function, bool narrow = false) {
  Panel panel;
  panel.x_label = function.type.complex() ? "real part of the argument"
                  : function.shape.sources == 2 || function.shape.scalar ? "first argument"
                                                                         : "argument";
  panel.log_x = axis.scale == Axis::kLogarithmic;
  panel.x_low = axis.place(0);
  panel.x_high = axis.place(1);
  if (axis.scale == Axis::kPositions) {
    panel.x_tics = position_tics(axis, narrow);
    panel.x_label += ", every exponent as wide";
  }
  return panel;
}

Range range_in(const std::string& text, const char* option) {
  const auto bound = [&](const std::string& part) {
    uint64_t bits = 0;
    std::string why;
    if (!parse_real(part, 8, bits, why) || number_format(8).is_nan(bits))
      throw Failure(fmt::format("{}: {} is no number", option, in_quotes(part)));
    return as_double(bits, 8);
  };
  const size_t colon = text.find(':');
  if (colon == std::string::npos)
    throw Failure(
        fmt::format("{} takes two numbers with a colon between them, such as -1:1", option));
  const Range range{bound(text.substr(0, colon)), bound(text.substr(colon + 1))};
  if (!(range.low < range.high))
    throw Failure(fmt::format("{}: the first number must be below the second", option));
  return range;
}

// ---- The other arguments ---------------------------------------------------------------------

static bool has_second(const Function& f) { return f.shape.sources == 2 || f.shape.scalar; }

// Real numbers behind the first: imaginary part, then second source or scalar.
static int others_of(const Function& f) { return f.type.parts * (has_second(f) ? 2 : 1) - 1; }

// What --second fixes of them, from the first place on; none when it says nothing.
static std::vector<uint64_t> fixed_in(const Function& f, const std::string& second) {
  if (second.empty()) return {};
  if (others_of(f) == 0) throw Failure(fmt::format("--second: {} takes one real argument", f.name));
  const ElementType type = has_second(f) ? f.type : ElementType{"", 0, f.type.width, 1};
  std::string bytes;
  try {
    parse_element(second, type, bytes);
  } catch (const Failure& why) {
    throw Failure(fmt::format("--second: {}", why.what()));
  }
  std::vector<uint64_t> fixed;
  for (int part = 0; part < type.parts; ++part)
    fixed.push_back(load_bits(&bytes[size_t(part * type.width)], type.width));
  return fixed;
}

void check_second(const Function& function, const std::string& second) {
  fixed_in(function, second);
}

static double drawn_from(const bench::Interval& interval, double share) {
  if (interval.spread == bench::UNIFORM)
    return interval.low + (interval.high - interval.low) * share;
  if (interval.spread == bench::LOG)
    return interval.low * std::pow(interval.high / interval.low, share);
  const double twice = 2 * share - 1;
  const double size = interval.low * std::pow(interval.high / interval.low, std::fabs(twice));
  return std::copysign(size, twice);
}

// Fills what stands behind the first number from the typical intervals, `share` says where.
template <class Share>
static void fill_others(const Function& f, const std::vector<uint64_t>& fixed, const Share& share,
                        bench::Argument& argument) {
  const int others = others_of(f);
  for (int i = 1; i <= others; ++i) {
    const bench::Interval& interval = bench::typical_of(f).source[i >= f.type.parts];
    argument[size_t(i)] = bench::nearest(drawn_from(interval, share()), f.type.width);
  }
  std::copy(fixed.begin(), fixed.end(), argument.begin() + (has_second(f) ? f.type.parts : 1));
}

static std::string others_text(const Function& f, const bench::Argument& argument) {
  std::string text;
  const auto add = [&](const char* name, int first, int count) {
    text += fmt::format(", {} ", name);
    for (int i = 0; i < count; ++i)
      text += fmt::format("{}{:.4g}", i ? "," : "",
                          as_double(argument[size_t(first + i)], f.type.width));
  };
  if (f.type.complex()) add("imaginary part", 1, 1);
  if (has_second(f)) add(f.shape.scalar ? "scalar" : "second argument", f.type.parts, f.type.parts);
  return text;
}

// ---- Values ----------------------------------------------------------------------------------

// Arrays for one call over these arguments, which share their scalar.
static std::array<std::string, 2> results_of(const Function& f,
                                             const std::vector<bench::Argument>& arguments) {
  const size_t bytes = size_t(f.type.bytes());
  const size_t count = arguments.size();
  std::string sources[2];
  std::array<std::string, 2> results;
  for (int i = 0; i < 2; ++i) {
    sources[i].resize((count + 1) * bytes);
    results[size_t(i)].resize((count + 1) * bytes);
  }
  for (size_t k = 0; k < count; ++k)
    for (int i = 0; i <= others_of(f); ++i)
      store_bits(&sources[i / f.type.parts][k * bytes + size_t(i % f.type.parts * f.type.width)],
                 arguments[k][size_t(i)], f.type.width);
  f.call({{sources[0].data(), sources[1].data()},
          {results[0].data(), results[1].data()},
          sources[1].data()},
         int32_t(count));
  return results;
}

static double real_of(const Function& f, const std::array<std::string, 2>& results, size_t k,
                      int part) {
  const size_t at = k * size_t(f.type.bytes()) + size_t(part % f.type.parts * f.type.width);
  return as_double(load_bits(&results[size_t(part / f.type.parts)][at], f.type.width),
                   f.type.width);
}

// Poles must not flatten all the rest.
static void bound_by_most(Panel& panel) {
  std::vector<double> values;
  for (const Curve& curve : panel.curves)
    for (const auto& [x, y] : curve.points)
      if (std::isfinite(y)) values.push_back(y);
  if (values.empty()) return;
  std::sort(values.begin(), values.end());
  const double low = values.front(), high = values.back();
  const double least = values[values.size() / 25], most = values[values.size() * 24 / 25];
  // Exponentials span so much that only a logarithmic axis shows them.
  if (low > 0 && high / low > 1e4) {
    panel.log_y = true;
    return;
  }
  const double middle = most - least;
  if (middle > 0 && high - low > 5 * middle) {
    panel.y_low = std::max(low, least - 0.5 * middle);
    panel.y_high = std::min(high, most + 0.5 * middle);
    for (Curve& curve : panel.curves)
      for (auto& [x, y] : curve.points)
        if (!(y >= panel.y_low && y <= panel.y_high)) y = NAN;
  }
}

Panel value_panel(const Grades& grades, const CurveOptions& options) {
  const Function& f = **std::min_element(grades.begin(), grades.end(),
                                         [](auto* a, auto* b) { return a->variant < b->variant; });
  const Axis axis = axis_of(f, options.range);
  constexpr int kPoints = 801;
  std::vector<bench::Argument> arguments(kPoints);
  for (int i = 0; i < kPoints; ++i) {
    bench::Argument& argument = arguments[size_t(i)];
    argument[0] = bench::nearest(axis.number(double(i) / (kPoints - 1)), axis.width);
    fill_others(
        f, fixed_in(f, options.second), [] { return 0.6; }, argument);
  }
  const auto results = results_of(f, arguments);
  Panel panel = panel_over(axis, f);
  panel.title = fmt::format("{}: values{}", f.name, others_text(f, arguments[0]));
  panel.y_label = "result";
  const int parts = bench::Oracle::results(f);
  const char* const names[] = {f.type.complex()       ? "real part"
                               : f.family == "SinCos" ? "sine"
                                                      : "integer part",
                               f.type.complex()       ? "imaginary part"
                               : f.family == "SinCos" ? "cosine"
                                                      : "fraction"};
  for (int part = 0; part < parts; ++part) {
    Curve curve{parts > 1 ? names[part] : "", colour::kGrades[part], {}, part ? 2 : 1, 1.6};
    for (int i = 0; i < kPoints; ++i)
      curve.points.emplace_back(axis.place(double(i) / (kPoints - 1)),
                                real_of(f, results, size_t(i), part));
    panel.curves.push_back(curve);
  }
  bound_by_most(panel);
  return panel;
}

// ---- Errors ----------------------------------------------------------------------------------

// A promise of a relative error counts in units of 2^-23 or 2^-52: those of the last place of
// numbers that are a power of two.
static double unit_of(const Function& f) { return std::exp2(number_format(f.type.width).mantissa); }

static double promised_height(const Function& f) {
  const bench::Accuracy promise = bench::guarantee(f);
  switch (promise.kind) {
    case bench::Accuracy::kUlp:
    case bench::Accuracy::kNearest:
      return promise.value;
    case bench::Accuracy::kExact:
      return 0;
    default:
      return std::exp2(-promise.value) * unit_of(f);
  }
}

static double measured_height(const Function& f, const bench::Statistics& s) {
  if (s.count == 0) return NAN;
  switch (bench::guarantee(f).kind) {
    case bench::Accuracy::kRelativeBits:
      return s.max_relative * unit_of(f);
    case bench::Accuracy::kNormwiseBits:
      return s.max_normwise * unit_of(f);
    default:
      return s.max_ulp();
  }
}

static const char* kind_of(const Function& f) {
  switch (bench::guarantee(f).kind) {
    case bench::Accuracy::kRelativeBits:
      return "relative";
    case bench::Accuracy::kNormwiseBits:
      return "normwise";
    default:
      return "ulp";
  }
}

static std::string grade_text(const Function& f) {
  return f.graded() ? std::string(f.grade) : "exact";
}

// The curves of `heights`, one for each grade, and the promises; those of another kind cannot stand
// beside heights that are `only_ulp`.
static void add_errors(Panel& panel, const Grades& grades,
                       const std::vector<std::vector<double>>& heights,
                       const std::vector<double>& places, bool only_ulp) {
  const Function& first = *grades[0];
  double most = 0, least_promise = HUGE_VAL;
  std::vector<bool> shown(grades.size());
  // The lower grades first, so that the best lies above them.
  std::vector<size_t> order(grades.size());
  for (size_t g = 0; g < grades.size(); ++g) order[g] = g;
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return grades[a]->variant > grades[b]->variant; });
  for (size_t k = 0; k < order.size(); ++k) {
    const size_t g = order[k];
    if (shown[g]) continue;
    std::string label = grade_text(*grades[g]);
    const Function* best = grades[g];
    for (size_t other = k + 1; other < order.size(); ++other) {
      const size_t o = order[other];
      const bool same_curve =
          heights[o].size() == heights[g].size() &&
          std::equal(heights[o].begin(), heights[o].end(), heights[g].begin(),
                     [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); });
      if (same_curve) shown[o] = true, label += ", " + grade_text(*grades[o]), best = grades[o];
    }
    Curve curve{label, colour_of(*best), {}, 1, 1};
    for (size_t i = 0; i < places.size(); ++i) {
      curve.points.emplace_back(places[i], heights[g][i]);
      if (std::isfinite(heights[g][i])) most = std::max(most, heights[g][i]);
    }
    panel.curves.push_back(curve);
  }
  for (const size_t g : order) {
    if (only_ulp && kind_of(*grades[g]) != std::string_view("ulp")) continue;
    const double height = promised_height(*grades[g]);
    if (height == 0) continue;
    const std::string promise = "promise " + bench::text_of(bench::guarantee(*grades[g]));
    least_promise = std::min(least_promise, height);
    most = std::max(most, height);
    const auto same = std::find_if(panel.curves.begin(), panel.curves.end(),
                                   [&](const Curve& c) { return c.label == promise; });
    if (same != panel.curves.end())
      same->colour = colour_of(*grades[g]);
    else
      panel.curves.push_back({promise,
                              colour_of(*grades[g]),
                              {{panel.x_low, height}, {panel.x_high, height}},
                              2,
                              1.4});
  }
  panel.y_low = 0;
  panel.y_high = most > 0 ? 1.1 * most : 1;
  if (most == 0) {
    panel.title += ", all results are exact";
    panel.curves[0].width = 2;
  }
  std::vector<double> tops;
  for (const auto& heights_of_grade : heights) {
    double top = 0;
    for (const double y : heights_of_grade)
      if (std::isfinite(y)) top = std::max(top, y);
    if (top > 0) tops.push_back(top);
  }
  const double lowest_top = tops.empty() ? 1 : *std::min_element(tops.begin(), tops.end());
  if (most > 12 * std::min(lowest_top, least_promise)) {
    panel.log_y = true;
    panel.y_low = std::min(0.1, lowest_top / 4);
    panel.y_high = 2 * most;
    for (Curve& curve : panel.curves)
      for (auto& [x, y] : curve.points)
        if (y < panel.y_low) y = panel.y_low;  // no error at all, on a scale without a zero
  }
  std::string relative;
  for (const Function* f : grades)
    if (kind_of(*f) != std::string_view("ulp"))
      relative += (relative.empty() ? "" : ", ") + std::string(f->grade);
  panel.y_label = "error, ulp";
  if (!only_ulp && !relative.empty()) {
    const std::string unit = fmt::format("2^-{}", number_format(first.type.width).mantissa);
    panel.y_label = relative.find(',') != std::string::npos || grades.size() == 1
                        ? fmt::format("error, ulp or relative in {}", unit)
                        : fmt::format("error, ulp ({}: relative in {})", relative, unit);
    if (kind_of(first) == std::string_view("normwise"))
      panel.y_label = fmt::format("error, share of the magnitude in {}", unit);
  }
}

// A result that is no number of any grade has no error: the function is not there.
static bool is_anywhere(const Function& f, const std::array<std::string, 2>& results, size_t k) {
  return !std::isnan(real_of(f, results, k, 0));
}

static std::vector<bench::Argument> arguments_in_column(const Function& f, const Axis& axis,
                                                        const std::vector<uint64_t>& fixed,
                                                        int column, int count) {
  Random random{uint64_t(column)};
  constexpr int kScalars = 8;
  std::vector<bench::Argument> kept;
  for (int group = 0; group < (f.shape.scalar ? kScalars : 1); ++group) {
    // One call takes one scalar, the same in every column.
    Random of_scalar{uint64_t(group) + 1'000'000};
    bench::Argument scalar{};
    fill_others(
        f, fixed, [&] { return of_scalar.unit(); }, scalar);
    std::vector<bench::Argument> arguments;
    for (int i = 0; i < std::max(1, f.shape.scalar ? count / kScalars : count); ++i) {
      bench::Argument argument{};
      const double share = (column + random.unit()) / kColumns;
      argument[0] = bench::nearest(axis.number(share), axis.width);
      fill_others(
          f, fixed, [&] { return random.unit(); }, argument);
      if (f.shape.scalar)
        std::copy_n(scalar.begin() + f.type.parts, f.type.parts, argument.begin() + f.type.parts);
      arguments.push_back(argument);
    }
    const auto results = results_of(f, arguments);
    for (size_t k = 0; k < arguments.size(); ++k)
      if (is_anywhere(f, results, k)) kept.push_back(arguments[k]);
  }
  return kept;
}

static std::string family_and_type(const Function& f) {
  return fmt::format("{} {}", f.family, f.type.name);
}

Panel error_panel(const Grades& grades, const CurveOptions& options) {
  const Function& f = *grades[0];
  const Axis axis = axis_of(f, options.range);
  const std::vector<uint64_t> fixed = fixed_in(f, options.second);
  std::vector<std::vector<double>> heights(grades.size(), std::vector<double>(kColumns, NAN));
  std::atomic<int> next{0};
  const std::atomic<bool> stop{false};
  bench::on_threads(options.processors, [&](const std::atomic<bool>& failed) {
    for (int column; !failed && (column = next++) < kColumns;) {
      const auto arguments =
          arguments_in_column(f, axis, fixed, column, std::max(1, options.samples / kColumns));
      if (arguments.empty()) continue;
      const auto statistics = bench::survey(grades, arguments, 1, {}, stop);
      for (size_t g = 0; g < grades.size(); ++g)
        heights[g][size_t(column)] = measured_height(*grades[g], statistics[g]);
    }
  });

  std::vector<double> places(kColumns);
  for (int i = 0; i < kColumns; ++i) places[size_t(i)] = axis.place((i + 0.5) / kColumns);
  Panel panel = panel_over(axis, f);
  panel.title = grades.size() == 1 ? std::string(f.name) : family_and_type(f);
  panel.title += ": largest error";
  if (!options.second.empty()) {
    panel.title += fmt::format(", {} {}",
                               !has_second(f)   ? "imaginary part"
                               : f.shape.scalar ? "scalar"
                                                : "second argument",
                               options.second);
  }
  add_errors(panel, grades, heights, places, false);
  return panel;
}

Panel error_panel(const Grades& grades, const std::vector<Json>& envelopes) {
  const Function& f = *grades[0];
  const Axis axis = axis_of(f, Range{-HUGE_VAL, HUGE_VAL});
  constexpr size_t kJoined = 4;  // intervals of the envelope to a point of the curve
  const size_t count = envelopes[0].size() / kJoined;
  std::vector<std::vector<double>> heights;
  for (const Json& envelope : envelopes) {
    heights.emplace_back(count, NAN);
    for (size_t i = 0; i < count * kJoined; ++i)
      if (double& height = heights.back()[i / kJoined]; !envelope.at(i).is_null())
        height = std::fmax(height, std::min(envelope.at(i).get<double>(), 1e6));
  }
  std::vector<double> places;
  for (size_t i = 0; i < count; ++i)
    places.push_back(axis.place((double(i) + 0.5) / double(count)));
  Panel panel = panel_over(axis, f, true);
  panel.title = family_and_type(f) + ": largest error";
  add_errors(panel, grades, heights, places, true);
  return panel;
}
