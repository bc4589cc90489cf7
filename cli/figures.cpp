// SPDX-License-Identifier: MIT
//
// One entry per computation: grades whose results are the same, bit for bit, share it.
#include "cli/figures.h"

#include "accuracy/promises.h"
#include "cli/files.h"
#include "cli/json_file.h"
#include "cli/json_formats.h"
#include "cli/machine.h"
#include "conformance/result_hash.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>

static Json read_figures(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return Json::object();
  try {
    Json figures = parse_json(read_file(path));
    require_format(figures, "luxvm-figures");
    for (const Json& computation : array_in(figures, "computations")) {
      text_in(computation, "family");
      text_in(computation, "type");
      text_in(computation, "hash");
      for (const Json& largest : array_in(computation, "largest")) {
        text_in(largest, "kind");
        number_in(largest, "error");
      }
    }
    return figures;
  } catch (const BadField& field) {
    throw Failure(fmt::format("{} was not written by luxvm accuracy --record: {}", in_quotes(path),
                              field.what()));
  }
}

void require_recordable(const std::string& path) {
  if (is_standard_stream(path)) throw Failure("--record needs the name of a file");
  read_figures(path);
  require_writable(path);
}

// What the library does not give has no figures to keep; on another processor, those of the same
// kernel count.
static void require_published(const Function& function) {
  if (!bench::published_hash(function) ||
      (!bench::processor_dependent(function) &&
       bench::fixed_results(function).hash() != *bench::published_hash(function)))
    throw Failure(fmt::format(
        "--record: the results of {} are not the published ones (luxvm check)", function.name));
}

// The grades of a family and type that share one computation, the best first.
using Grades = std::vector<const Function*>;

static std::vector<Grades> all_computations() {
  std::vector<Grades> all;
  for (const Function* function : find_functions({})) {
    const Function* last = all.empty() ? nullptr : all.back()[0];
    if (!last || !last->is(function->family, function->type.name) ||
        bench::published_hash(*last) != bench::published_hash(*function))
      all.emplace_back();
    all.back().insert(all.back().begin(), function);
  }
  return all;
}

static std::string processor_text() {
  const Machine machine = probe_machine();
  const uint32_t signature = machine.leaf1.eax;
  const uint32_t family = (signature >> 8 & 15) + (signature >> 20 & 255);
  const uint32_t model = (signature >> 4 & 15) | (signature >> 12 & 0xF0);
  return fmt::format("{}, family {}, model {}",
                     machine.brand.empty() ? machine.vendor : machine.brand, family, model);
}

static Json head_of(const Grades& grades) {
  Json names = Json::array(), promises = Json::array();
  for (const Function* function : grades) {
    names.push_back(function->grade);
    promises.push_back(bench::text_of(bench::guarantee(*function)));
  }
  return {{"family", grades[0]->family},
          {"type", grades[0]->type.name},
          {"grades", names},
          {"promises", promises},
          {"hash", fmt::format("0x{:016X}", bench::published_hash(*grades[0]).value_or(0))}};
}

static bool promised_in(const Grades& grades, const std::string& kind) {
  return kind == "ulp" || std::ranges::any_of(grades, [&](const Function* function) {
           const bench::Accuracy::Kind promised = bench::guarantee(*function).kind;
           return (kind == "relative" && promised == bench::Accuracy::kRelativeBits) ||
                  (kind == "normwise" && promised == bench::Accuracy::kNormwiseBits);
         });
}

static Json computation_of(const Grades& grades, const Json& report) {
  const std::string date = fmt::format("{:%Y-%m-%d}", fmt::localtime(time(nullptr)));
  Json computation = head_of(grades);
  computation["survey"] = {{"method", report.at("method")},
                           {"date", date},
                           {"results", report.at("count")},
                           {"mean_ulp", report.at("mean_ulp")}};
  computation["largest"] = Json::array();
  for (Json found : report.at("largest")) {
    if (!promised_in(grades, found.at("kind"))) continue;
    found["found"] = report.at("method");
    found["date"] = date;
    found["processor"] = processor_text();
    computation["largest"].push_back(found);
  }
  return computation;
}

static bool same_kind(const Json& a, const Json& b) {
  return a.at("kind") == b.at("kind") && a.value("part", "") == b.value("part", "");
}

// What is known of the same results already goes into `now`.
static void keep(Json& now, const Json& known, bool whole_line) {
  if (!whole_line ||
      (known.contains("survey") && known["survey"].value("method", "") == "exhaustive" &&
       now["survey"]["method"] != "exhaustive")) {
    now.erase("survey");
    if (known.contains("survey")) now["survey"] = known["survey"];
  }
  if (!known.contains("largest")) return;
  std::vector<Json> largest = now.at("largest").get<std::vector<Json>>();
  for (const Json& before : known.at("largest")) {
    const auto same = std::find_if(largest.begin(), largest.end(),
                                   [&](const Json& one) { return same_kind(one, before); });
    if (same == largest.end())
      largest.push_back(before);
    else if (before.at("error").get<double>() >= same->at("error").get<double>())
      *same = before;
  }
  now["largest"] = Json(largest);
}

// A line for each error, so that changes are seen.
static std::string text_of(const Json& figures) {
  std::string text =
      fmt::format("{{\"format\": {},\n\"computations\": [\n", format_json("luxvm-figures").dump());
  const Json& all = figures.at("computations");
  for (size_t i = 0; i < all.size(); ++i) {
    Json head = all[i];
    head.erase("largest");
    std::string line = head.dump();
    line.pop_back();
    text += line + ",\n \"largest\": [";
    const Json& largest = all[i].at("largest");
    for (size_t k = 0; k < largest.size(); ++k) text += (k ? ",\n  " : "\n  ") + largest[k].dump();
    text += fmt::format("]}}{}\n", i + 1 < all.size() ? "," : "");
  }
  return text + "]}\n";
}

// What is known of these grades: under the same results, or else under older ones.
static Json known_of(const Json& head, const Json& figures) {
  Json older;
  if (figures.contains("computations"))
    for (const Json& computation : figures.at("computations")) {
      if (computation.at("family") != head.at("family") ||
          computation.at("type") != head.at("type"))
        continue;
      if (computation.at("hash") == head.at("hash")) return computation;
      if (computation.value("grades", Json()) == head.at("grades")) older = computation;
    }
  return older;
}

void record_figures(const std::string& path, const Json& reports, bool whole_line) {
  const Json figures = read_figures(path);
  Json computations = Json::array();
  for (const Grades& grades : all_computations()) {
    const Json head = head_of(grades);
    Json known = known_of(head, figures);
    const auto report = std::ranges::find_if(reports, [&](const Json& r) {
      return std::ranges::any_of(grades,
                                 [&](const Function* f) { return r.at("name") == f->name; });
    });
    if (report != reports.end()) {
      for (const Function* function : grades) require_published(*function);
      Json now = computation_of(grades, *report);
      keep(now, known.is_object() && known.at("hash") == head.at("hash") ? known : Json::object(),
           whole_line);
      known = now;
    }
    if (known.is_object()) computations.push_back(known);
  }
  write_file(path, text_of({{"computations", computations}}));
}
