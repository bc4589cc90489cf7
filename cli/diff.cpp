// SPDX-License-Identifier: MIT
//
// luxvm diff: what became worse between two measurements.
#include "cli/cli.h"

#include <fmt/format.h>

#include <fstream>
#include <functional>
#include <map>

struct DiffOptions {
  std::string before, after;
  double ulp = 0.0001, percent = 10;
};

struct Change {
  std::string name, text;
  bool worse;
};

static Json read_document(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw Failure(fmt::format("cannot read {}: {}", path, strerror(errno)));
  Json document = Json::parse(file, nullptr, false);
  if (!document.is_object() || !document.contains("kind") || !document.contains("functions"))
    throw Failure(
        fmt::format("{} was not written by `luxvm accuracy --json` or `luxvm bench --json`", path));
  return document;
}

static std::map<std::string, Json> by_name(const Json& document) {
  std::map<std::string, Json> all;
  for (const Json& entry : document["functions"]) all[entry.at("name")] = entry;
  return all;
}

// ---- What counts as worse

using Compare = std::function<void(const std::string& name, const Json& before, const Json& after,
                                   std::vector<Change>& changes)>;

static void compare_number(const std::string& name, const char* what, double before, double after,
                           double tolerance, std::vector<Change>& changes) {
  if (std::abs(after - before) <= tolerance) return;
  changes.push_back(
      {name, fmt::format("{} {:.4f} -> {:.4f}", what, before, after), after > before});
}

static void compare_promise(const std::string& name, const char* key, const Json& before,
                            const Json& after, std::vector<Change>& changes) {
  if (!before.contains(key) || !after.contains(key)) return;
  const bool was = before[key]["met"], is = after[key]["met"];
  if (was != is) changes.push_back({name, fmt::format("{} {}", key, is ? "met" : "missed"), !is});
}

static void compare_accuracy(const std::string& name, const Json& before, const Json& after,
                             double tolerance, std::vector<Change>& changes) {
  compare_number(name, "largest error in ulp", before.at("max_ulp"), after.at("max_ulp"), tolerance,
                 changes);
  compare_number(name, "results of a wrong class", before.at("mismatches"), after.at("mismatches"),
                 0, changes);
  compare_number(name, "wrong special values",
                 double(before.at("special_values").at("failures").size()),
                 double(after.at("special_values").at("failures").size()), 0, changes);
  compare_promise(name, "guarantee", before, after, changes);
  compare_promise(name, "goal", before, after, changes);
}

static void compare_speed(const std::string& name, const Json& before, const Json& after,
                          double percent, std::vector<Change>& changes) {
  const double was = before.at("cycles").at("minimum"), is = after.at("cycles").at("minimum");
  compare_number(name, "cycles per element", was, is, was * percent / 100, changes);
}

// ---- The command

static void diff(const DiffOptions& options) {
  const Json before = read_document(options.before), after = read_document(options.after);
  const std::string kind = before["kind"];
  if (kind != after["kind"])
    throw Failure(fmt::format("{} holds {} figures, {} holds {} figures", options.before, kind,
                              options.after, after["kind"].get<std::string>()));
  if (kind != "luxvm accuracy" && kind != "luxvm bench")
    throw Failure(fmt::format("{}: unknown kind of figures '{}'", options.before, kind));
  const auto olds = by_name(before), news = by_name(after);
  std::vector<Change> changes;
  size_t compared = 0;
  for (const auto& [name, entry] : olds) {
    const auto found = news.find(name);
    if (found == news.end()) {
      changes.push_back({name, "no longer measured", true});
      continue;
    }
    ++compared;
    if (kind == "luxvm accuracy")
      compare_accuracy(name, entry, found->second, options.ulp, changes);
    else
      compare_speed(name, entry, found->second, options.percent, changes);
  }
  for (const auto& [name, entry] : news)
    if (!olds.count(name)) changes.push_back({name, "new", false});
  size_t worse = 0;
  for (const Change& change : changes) {
    worse += change.worse;
    fmt::print("{:<24} {} {}\n", change.name,
               change.worse ? paint(Colour::bad, "worse ") : paint(Colour::good, "fine  "),
               change.text);
  }
  fmt::print("{} functions compared, {} worse\n", compared, worse);
  if (worse > 0) throw Failure(fmt::format("{} regression{}", worse, worse == 1 ? "" : "s"));
}

void add_diff(CLI::App& program) {
  auto options = std::make_shared<DiffOptions>();
  CLI::App* command =
      program.add_subcommand("diff", "Compare two measurements and show what became worse");
  command->add_option("OLD", options->before, "File of `accuracy --json` or `bench --json`")
      ->required();
  command->add_option("NEW", options->after, "Another one of the same kind")->required();
  command->add_option("--ulp", options->ulp, "Errors: ignore changes up to this many ulp")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  command->add_option("--percent", options->percent, "Cycles: ignore changes up to this share")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  command->footer(
      "Exit status 1 when anything became worse: a larger error, a broken guarantee, a wrong\n"
      "special value, more cycles, a function that is missing.\n"
      "Examples:\n"
      "  luxvm diff before.json after.json\n"
      "  luxvm diff old_speed.json new_speed.json --percent 5");
  command->callback([options] { diff(*options); });
}
