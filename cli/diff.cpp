// SPDX-License-Identifier: MIT
//
// luxvm diff: what became worse between two measurements.
#include "cli/cli.h"
#include "cli/command_line.h"
#include "cli/files.h"
#include "cli/json_file.h"
#include "cli/json_formats.h"

#include <fmt/format.h>

#include <map>

struct DiffOptions {
  std::string before, after;
  double ulp = 0.0001, percent = 10;
};

struct Change {
  std::string name, text;
  bool worse;
};

// The figures of a file by what was measured, and whether they are speeds.
struct Measurement {
  bool speed = false;
  std::map<std::string, Json> entries;
};

// The name goes to the terminal, and another version may have other functions.
static std::string name_of(const Json& entry) {
  const std::string name = text_in(entry, "name");
  for (const unsigned char c : name)
    if (!isalnum(c) && c != '_') throw BadField("'name' is no function's");
  return name;
}

// A function may have been timed in several ways.
static std::string timed_name(const Json& row) {
  std::string name = name_of(row);
  for (const char* key : {"n", "threads", "offset", "special_elements"})
    name += fmt::format(" {} {}", key, whole_in(row, key, 0, INT32_MAX));
  return row.contains("large") && flag_in(row, "large") ? name + " large" : name;
}

static void check_speed(const Json& row) {
  const Json& minimum = member(object_in(row, "cycles"), "minimum");
  if (!minimum.is_null()) number_in(row["cycles"], "minimum");  // null: the clock never held still
}

static void check_accuracy(const Json& entry) {
  number_in(entry, "max_ulp");
  whole_in(entry, "mismatches", 0, INT64_MAX);
  array_in(object_in(entry, "special_values"), "failures");
  flag_in(object_in(entry, "guarantee"), "met");
  if (entry.contains("goal")) flag_in(object_in(entry, "goal"), "met");
}

static Measurement read_measurement(const std::string& path) {
  const std::string text = read_file(path);
  Measurement measurement;
  try {
    const Json document = parse_json(text);
    measurement.speed = document.is_object() && document.contains("rows");
    require_format(document, measurement.speed ? "luxvm-bench" : "luxvm-accuracy");
    for (const Json& entry : array_in(document, measurement.speed ? "rows" : "functions")) {
      measurement.speed ? check_speed(entry) : check_accuracy(entry);
      const std::string name = measurement.speed ? timed_name(entry) : name_of(entry);
      if (!measurement.entries.emplace(name, entry).second)
        throw BadField(fmt::format("{} stands there twice", name));
    }
  } catch (const BadField& bad) {
    throw Failure(
        fmt::format("{} was not written by `luxvm accuracy --json` or `luxvm bench --json`: {}",
                    path, bad.what()));
  }
  return measurement;
}

// ---- What counts as worse

static void compare_number(const std::string& name, const char* what, double before, double after,
                           double tolerance, std::vector<Change>& changes) {
  if (std::abs(after - before) <= tolerance) return;
  changes.push_back(
      {name, fmt::format("{} {:.4f} -> {:.4f}", what, before, after), after > before});
}

static void compare_promise(const std::string& name, const char* key, const Json& before,
                            const Json& after, std::vector<Change>& changes) {
  if (!before.contains(key) || !after.contains(key)) return;
  const bool was = before.at(key).at("met"), is = after.at(key).at("met");
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
  const Json &was_json = before.at("cycles").at("minimum"),
             &is_json = after.at("cycles").at("minimum");
  if (!was_json.is_number() || !is_json.is_number()) return;  // the clock never held still
  const double was = was_json, is = is_json;
  compare_number(name, "cycles per element", was, is, was * percent / 100, changes);
}

// ---- The command

static void diff(const DiffOptions& options) {
  const Measurement before = read_measurement(options.before),
                    after = read_measurement(options.after);
  if (before.speed != after.speed)
    throw Failure(fmt::format("{} holds {}, {} holds {}", options.before,
                              before.speed ? "speeds" : "errors", options.after,
                              after.speed ? "speeds" : "errors"));
  for (const Measurement* m : {&before, &after})
    if (m->entries.empty())
      throw Failure(
          fmt::format("{} holds no figures", m == &before ? options.before : options.after));
  std::vector<Change> changes;
  size_t compared = 0;
  for (const auto& [name, entry] : before.entries) {
    const auto found = after.entries.find(name);
    if (found == after.entries.end()) {
      changes.push_back({name, "no longer measured", true});
      continue;
    }
    ++compared;
    if (before.speed)
      compare_speed(name, entry, found->second, options.percent, changes);
    else
      compare_accuracy(name, entry, found->second, options.ulp, changes);
  }
  for (const auto& [name, entry] : after.entries)
    if (!before.entries.count(name)) changes.push_back({name, "new", false});
  size_t worse = 0;
  for (const Change& change : changes) {
    worse += change.worse;
    fmt::print("{:<24} {} {}\n", change.name,
               change.worse ? paint(Colour::bad, "worse ") : paint(Colour::good, "fine  "),
               change.text);
  }
  fmt::print("{} functions compared, {} worse\n", compared, worse);
  if (worse > 0) throw CheckFailed(fmt::format("{} regression{}", worse, worse == 1 ? "" : "s"));
}

void add_diff(Program& program) {
  auto options = std::make_shared<DiffOptions>();
  Command* command =
      program.add_subcommand("diff", "Compare two measurements and show what became worse");
  command->add_option("OLD", options->before, "File of `accuracy --json` or `bench --json`")
      ->required();
  command->add_option("NEW", options->after, "Another one of the same kind")->required();
  command->add_option("--ulp", options->ulp, "Errors: ignore changes up to this many ulp")
      ->capture_default_str()
      ->check_not_negative();
  command->add_option("--percent", options->percent, "Cycles: ignore changes up to this share")
      ->capture_default_str()
      ->check_not_negative();
  command->footer(
      "Exit code 1 when anything became worse: a larger error, a broken guarantee, a wrong\n"
      "special value, more cycles, a function that is missing.\n"
      "Examples:\n"
      "  luxvm diff before.json after.json\n"
      "  luxvm diff old_speed.json new_speed.json --percent 5");
  command->callback([options] { diff(*options); });
}
