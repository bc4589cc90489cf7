// SPDX-License-Identifier: MIT
#include "accuracy/record.h"

#include "accuracy/promises.h"

#include <fmt/format.h>

namespace bench {
namespace {

// JSON has no infinity.
double finite(double x) { return std::min(x, 1e300); }

Json raw(const Case& found) { return {found.argument, found.got, found.result, finite(found.ulp)}; }
Case case_of(const Json& raw) { return {raw.at(0), raw.at(1), raw.at(2), raw.at(3)}; }

Json raw(const std::vector<Case>& cases) {
  Json all = Json::array();
  for (const Case& found : cases) all.push_back(raw(found));
  return all;
}
std::vector<Case> cases_of(const Json& raw) {
  std::vector<Case> all;
  for (const Json& found : raw) all.push_back(case_of(found));
  return all;
}

Json raw(const Largest& largest) { return {finite(largest.error), largest.argument}; }
Largest largest_of(const Json& raw) { return {raw.at(0), raw.at(1)}; }

Json hex(const Function& function, const Argument& argument) {
  Json all = Json::array();
  for (int i = 0; i < Oracle::arguments(function); ++i)
    all.push_back(bench::hex(argument[size_t(i)], function.type.width));
  return all;
}

Json reported(const Function& function, const std::vector<Case>& cases) {
  Oracle oracle(function);
  Json all = Json::array();
  for (const Case& found : cases) {
    oracle.evaluate(found.argument);
    const int width = function.type.width;
    Json entry{{"arguments", hex(function, found.argument)},
               {"result", bench::hex(found.got, width)},
               {"nearest", bench::hex(nearest(oracle.exact(found.result), width), width)},
               {"ulp", finite(found.ulp)}};
    if (Oracle::results(function) > 1) entry["part"] = found.result;
    all.push_back(entry);
  }
  return all;
}

std::string part_name(const Function& function, int result) {
  if (Oracle::results(function) == 1) return "";
  if (function.type.complex()) return result == 0 ? "real" : "imaginary";
  if (function.family == "SinCos") return result == 0 ? "sine" : "cosine";
  return result == 0 ? "integer" : "fraction";
}

// The largest error of each kind that a promise may be made in, and of each part of a result.
Json all_largest(const Function& function, const Statistics& s) {
  Json all = Json::array();
  const auto add = [&](const char* kind, const std::string& part, const Largest& largest) {
    if (largest.error == 0) return;
    Json entry{{"kind", kind}};
    if (!part.empty()) entry["part"] = part;
    entry["error"] = finite(largest.error);
    entry["arguments"] = hex(function, largest.argument);
    all.push_back(entry);
  };
  for (int k = 0; k < Oracle::results(function); ++k) add("ulp", part_name(function, k), s.ulp[k]);
  for (int k = 0; k < Oracle::results(function); ++k)
    add("relative", part_name(function, k), s.relative[k]);
  if (function.type.complex()) add("normwise", "", s.normwise);
  return all;
}

Json judged(const Statistics& statistics, const Accuracy& bound) {
  return {{"bound", text_of(bound)}, {"met", within(statistics, bound)}};
}

}  // namespace

std::string hex(uint64_t bits, int width) { return fmt::format("0x{:0{}X}", bits, 2 * width); }

Json record_of(const Statistics& s) {
  Json ranges = Json::array();
  for (const Statistics::Range& range : s.ranges)
    ranges.push_back({range.count, finite(range.sum), finite(range.max), range.worst});
  return {{"count", s.count},
          {"mismatches", s.mismatches},
          {"beside", s.beside},
          {"not_nearest", s.not_nearest},
          {"sum", finite(s.sum)},
          {"max_relative", finite(s.max_relative)},
          {"max_normwise", finite(s.max_normwise)},
          {"ulp", {raw(s.ulp[0]), raw(s.ulp[1])}},
          {"relative", {raw(s.relative[0]), raw(s.relative[1])}},
          {"normwise", raw(s.normwise)},
          {"max_beside", finite(s.max_beside)},
          {"max_subnormal", finite(s.max_subnormal)},
          {"classes", s.classes},
          {"ranges", ranges},
          {"envelope", s.envelope},
          {"worst", raw(s.worst)},
          {"mismatched", raw(s.mismatched)}};
}

Statistics statistics_of(const Json& record) {
  Statistics s;
  record.at("count").get_to(s.count);
  record.at("mismatches").get_to(s.mismatches);
  record.at("beside").get_to(s.beside);
  record.at("not_nearest").get_to(s.not_nearest);
  record.at("sum").get_to(s.sum);
  record.at("max_relative").get_to(s.max_relative);
  record.at("max_normwise").get_to(s.max_normwise);
  record.at("max_beside").get_to(s.max_beside);
  record.at("max_subnormal").get_to(s.max_subnormal);
  record.at("classes").get_to(s.classes);
  record.at("envelope").get_to(s.envelope);
  for (size_t k = 0; k < 2; ++k) {
    s.ulp[k] = largest_of(record.at("ulp").at(k));
    s.relative[k] = largest_of(record.at("relative").at(k));
  }
  s.normwise = largest_of(record.at("normwise"));
  for (size_t i = 0; i < kRanges; ++i) {
    const Json& range = record.at("ranges").at(i);
    s.ranges[i] = {range.at(0), range.at(1), range.at(2), range.at(3)};
  }
  s.worst = cases_of(record.at("worst"));
  s.mismatched = cases_of(record.at("mismatched"));
  return s;
}

Json record_of(const Exhaustion& exhaustion) {
  Json statistics = Json::array();
  for (const Statistics& grade : exhaustion.statistics) statistics.push_back(record_of(grade));
  return {{"done", exhaustion.done}, {"statistics", statistics}};
}

Exhaustion exhaustion_of(const Json& record) {
  Exhaustion exhaustion;
  record.at("done").get_to(exhaustion.done);
  for (const Json& grade : record.at("statistics"))
    exhaustion.statistics.push_back(statistics_of(grade));
  return exhaustion;
}

Json report_of(const Function& function, const Statistics& s, bool exhaustive) {
  Json histogram = Json::array(), ranges = Json::array(), envelope = Json::array();
  for (int i = 0; i < kClasses; ++i)
    histogram.push_back({{"up_to", i < kClasses - 1 ? Json(kHistogram[i]) : Json(nullptr)},
                         {"count", s.classes[i]}});
  for (int i = 0; i < kRanges; ++i)
    if (const Statistics::Range& range = s.ranges[i]; range.count > 0)
      ranges.push_back({{"range", range_name(i)},
                        {"count", range.count},
                        {"max_ulp", finite(range.max)},
                        {"mean_ulp", finite(range.sum / double(range.count))},
                        {"arguments", hex(function, range.worst)}});
  for (const float value : s.envelope)
    envelope.push_back(value < 0 ? Json(nullptr) : Json(finite(value)));
  Json report{{"name", function.name},
              {"family", function.family},
              {"type", function.type.name},
              {"grade", function.grade},
              {"method", exhaustive ? "exhaustive" : "sampled"},
              {"count", s.count},
              {"max_ulp", finite(s.max_ulp())},
              {"max_relative", finite(s.max_relative)},
              {"mean_ulp", finite(s.mean())},
              {"max_ulp_subnormal_results", finite(s.max_subnormal)},
              {"not_nearest", s.not_nearest},
              {"mismatches", s.mismatches},
              {"guarantee", judged(s, guarantee(function))}};
  if (function.type.complex()) report["max_normwise"] = finite(s.max_normwise);
  if (const Goal* goal = find_goal(function)) report["goal"] = judged(s, goal->accuracy);
  report["largest"] = all_largest(function, s);
  if (s.beside > 0) report["exceptions"] = {{"count", s.beside}, {"max_ulp", finite(s.max_beside)}};
  report["worst"] = reported(function, s.worst);
  if (s.mismatches > 0) report["mismatched"] = reported(function, s.mismatched);
  report["histogram"] = histogram;
  report["ranges"] = ranges;
  report["envelope"] = envelope;
  return report;
}

}  // namespace bench
