// SPDX-License-Identifier: MIT
#include "cli/bench_rows.h"
#include "cli/json_file.h"
#include "cli/numbers.h"

#include <fmt/format.h>

#include <cmath>

static const bench::Goal* goal_of(const BenchRow& row) {
  const bool typical = row.n >= 1000 && row.n <= 4000 && row.special_elements == 0;
  if (!typical) return nullptr;
  return row.large ? bench::find_large_argument_goal(*row.function)
                   : bench::find_goal(*row.function);
}

double BenchRow::goal() const {
  const bench::Goal* found = goal_of(*this);
  return found ? found->cycles : 0;
}

// By the two decimals that are shown.
bool BenchRow::meets_goal() const { return std::round(element.minimum * 100) <= goal() * 100; }

double BenchRow::cycles_of_a_special_element() const {
  return (element.minimum - plain->minimum) * n / special_elements;
}

double BenchRow::call_beyond_element() const { return one_call->minimum - element.minimum; }

double ratio(const BenchRow& row, const std::optional<Figure>& peer) {
  return peer->minimum / row.element.minimum;
}

// A figure that is no number becomes null.
static Json figure_json(const Figure& figure) {
  return {{"minimum", figure.minimum},
          {"median", figure.median},
          {"kept", figure.kept},
          {"dropped", figure.dropped}};
}

static Figure figure_from_json(const Json& json) {
  Figure figure;
  if (!member(json, "minimum").is_null()) figure.minimum = number_in(json, "minimum");
  if (!member(json, "median").is_null()) figure.median = number_in(json, "median");
  figure.kept = int(whole_in(json, "kept", 0, INT32_MAX));
  figure.dropped = int(whole_in(json, "dropped", 0, INT32_MAX));
  return figure;
}

template <bench::InstructionSet set>
static bench::Peer sleef(const Function& function) {
  return bench::find_sleef(function, set);
}

const std::vector<Alternative> kAlternatives = {
    {"libm", "loop", &BenchRow::libm, bench::find_libm},
    {"libm_sse2", "SSE2 loop", &BenchRow::libm_sse2, bench::find_libm_sse2},
    {"sleef", "SLEEF", &BenchRow::sleef, sleef<bench::InstructionSet::kSse2>},
    {"sleef_avx2", "AVX2", &BenchRow::sleef_avx2, sleef<bench::InstructionSet::kAvx2>},
    {"sleef_avx512", "AVX-512", &BenchRow::sleef_avx512, sleef<bench::InstructionSet::kAvx512>}};

struct OptionalFigure {
  const char* name;
  std::optional<Figure> BenchRow::*figure;
};

static std::vector<OptionalFigure> optional_figures() {
  std::vector<OptionalFigure> all{
      {"wide", &BenchRow::wide}, {"plain", &BenchRow::plain}, {"one_call", &BenchRow::one_call}};
  for (const Alternative& a : kAlternatives) all.push_back({a.name, a.figure});
  return all;
}

Json row_json(const BenchRow& row) {
  const Function& f = *row.function;
  Json json{{"name", f.name},
            {"family", f.family},
            {"type", f.type.name},
            {"grade", f.grade.empty() ? Json() : Json(f.grade)},
            {"n", row.n},
            {"threads", row.threads},
            {"split", row.split},
            {"offset", row.offset},
            {"large", row.large},
            {"special_elements", row.special_elements},
            {"passes", row.passes},
            {"reports", row.reports},
            {"cycles", figure_json(row.element)}};
  for (const auto& [name, figure] : optional_figures())
    if (row.*figure) json[name] = figure_json(*(row.*figure));
  if (row.plain) json["cycles_of_a_special_element"] = row.cycles_of_a_special_element();
  if (row.one_call) json["call_beyond_element"] = row.call_beyond_element();
  if (row.goal() > 0) {
    json["goal"] = row.goal();
    json["met"] = row.meets_goal();
  }
  for (const Alternative& a : kAlternatives)
    if (row.*a.figure) json[std::string(a.name) + "_ratio"] = ratio(row, row.*a.figure);
  return json;
}

BenchRow row_from_json(const Json& json) {
  BenchRow row;
  const std::string function = text_in(json, "name");
  row.function = function_named(function);
  if (!row.function) throw BadField(fmt::format("there is no function {}", in_quotes(function)));
  const auto count = [&](const char* key, int32_t least) {
    return int32_t(whole_in(json, key, least, INT32_MAX));
  };
  row.n = count("n", 1);
  row.threads = count("threads", 1);
  row.split = flag_in(json, "split");
  row.offset = count("offset", 0);
  row.large = flag_in(json, "large");
  row.special_elements = count("special_elements", 0);
  row.passes = count("passes", 1);
  row.reports = object_in(json, "reports");
  row.element = figure_from_json(member(json, "cycles"));
  for (const auto& [name, figure] : optional_figures())
    if (json.contains(name)) row.*figure = figure_from_json(member(json, name));
  return row;
}

static bool is_lower_grade(const Function& lower, const Function& higher) {
  return lower.family == higher.family && lower.type.name == higher.type.name && lower.graded() &&
         lower.variant > higher.variant;
}

BenchSummary summarize(const std::vector<BenchRow>& rows) {
  BenchSummary summary;
  double logarithms = 0;
  for (const BenchRow& row : rows) {
    if (row.goal() == 0) continue;
    const Function& f = *row.function;
    ++summary.goals;
    summary.met += row.meets_goal();
    if (row.one_call && row.call_beyond_element() > bench::call_goal())
      summary.calls_above_goal.push_back(f.name);
    if (row.libm && f.graded() && ratio(row, row.libm) <= 1)
      summary.slower_than_libm.push_back(f.name);
    if (row.libm && f.variant == 0 && !f.type.complex()) {
      logarithms += std::log(ratio(row, row.libm));
      ++summary.mean_of;
    }
    for (const BenchRow& other : rows)
      if (other.goal() > 0 && other.large == row.large && is_lower_grade(f, *other.function) &&
          row.element.minimum > other.element.minimum * (1 + kNoise))
        summary.lower_grade_slower.push_back({f.name, other.function->name});
  }
  if (summary.mean_of > 0) summary.mean_ratio = std::exp(logarithms / summary.mean_of);
  return summary;
}

Json summary_json(const BenchSummary& summary) {
  Json json{{"goals", summary.goals},
            {"met", summary.met},
            {"mean_libm_ratio", summary.mean_ratio},
            {"mean_of", summary.mean_of},
            {"slower_than_libm", summary.slower_than_libm},
            {"lower_grade_slower", summary.lower_grade_slower},
            {"calls_above_goal", summary.calls_above_goal}};
  if (summary.mean_of == 0) json["mean_libm_ratio"] = nullptr;
  return json;
}

std::string measured_on(const Json& document) {
  return fmt::format("{}, {}; {}", document.value("processor", "unknown processor"),
                     document.value("date", "unknown date"), document.value("libm", "libm"));
}
