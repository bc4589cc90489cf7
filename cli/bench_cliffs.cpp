// SPDX-License-Identifier: MIT
#include "cli/bench_cliffs.h"
#include "bench/measure.h"
#include "catalog/thread_count.h"
#include "cli/bench_child.h"
#include "cli/cliff_classes.h"
#include "cli/reports.h"

#include <fmt/format.h>

#include <cmath>

constexpr int32_t kLength = 2000;
constexpr int32_t kShort[] = {1, 4, 5, 6, 7, 8};
constexpr double kShown = 2;  // times the ordinary, in the table for people

static double cycles_of_call(const Function& function, const Arrays& arrays, int32_t length,
                             int32_t milliseconds) {
  return bench::measure(
             [&](int32_t times) {
               for (; times > 0; --times) function.call(arrays, length);
             },
             milliseconds)
      .minimum;
}

static double cycles_of_class(const Function& function, const CliffClass& chosen,
                              bench::Share share, int32_t milliseconds) {
  bench::Filling filling;
  filling.n = kLength;
  filling.special = share;
  filling.elements = &chosen.elements;
  const bench::Arguments arguments(function, filling);
  return cycles_of_call(function, arguments.arrays, kLength, milliseconds) / kLength;
}

static Json measured_here(const Function& function, int32_t milliseconds) {
  leave_reports_to_the_library();
  bench::set_thread_count(1);
  const bench::Arguments plain(function, {kLength, 0, {}, false});
  CliffRow row;
  row.function = &function;
  row.ordinary = cycles_of_call(function, plain.arrays, kLength, milliseconds) / kLength;
  for (const CliffClass& chosen : cliff_classes(function)) {
    Cliff cliff{chosen.name};
    cliff.all = cycles_of_class(function, chosen, {1, 1}, milliseconds);
    if (!chosen.changes_scalar)
      cliff.one_percent = cycles_of_class(function, chosen, {1, 100}, milliseconds);
    row.cliffs.push_back(cliff);
  }
  for (int32_t length : kShort)
    row.calls[length] = cycles_of_call(function, plain.arrays, length, milliseconds);
  if (const bench::Peer loop = bench::find_libm(function); loop.run)
    row.loop_of_one =
        bench::measure([&](int32_t times) { loop.run(plain.arrays, 1, times); }, milliseconds)
            .minimum;
  Json sent{{"ordinary", row.ordinary}, {"loop", row.loop_of_one}, {"cliffs", Json::array()}};
  for (const Cliff& c : row.cliffs) sent["cliffs"].push_back({c.name, c.one_percent, c.all});
  for (const auto& [length, cycles] : row.calls) sent["calls"].push_back({length, cycles});
  return sent;
}

static double number(const Json& json) { return json.is_null() ? NAN : json.get<double>(); }

CliffRow measure_cliffs(const Function& function, int32_t milliseconds) {
  CliffRow row;
  row.function = &function;
  run_in_child(
      function, [&](const SendLine& send) { send(measured_here(function, milliseconds)); },
      [&](const Json& line) {
        row.ordinary = number(line["ordinary"]);
        row.loop_of_one = number(line["loop"]);
        for (const Json& c : line["cliffs"])
          row.cliffs.push_back({c[0], number(c[1]), number(c[2])});
        for (const Json& call : line["calls"]) row.calls[call[0]] = number(call[1]);
      });
  return row;
}

void keep_lower(CliffRow& row, const CliffRow& again) {
  row.ordinary = std::fmin(row.ordinary, again.ordinary);
  row.loop_of_one = std::fmin(row.loop_of_one, again.loop_of_one);
  for (size_t i = 0; i < row.cliffs.size() && i < again.cliffs.size(); ++i) {
    row.cliffs[i].all = std::fmin(row.cliffs[i].all, again.cliffs[i].all);
    row.cliffs[i].one_percent = std::fmin(row.cliffs[i].one_percent, again.cliffs[i].one_percent);
  }
  for (const auto& [length, cycles] : again.calls)
    row.calls[length] = std::fmin(row.calls[length], cycles);
}

// A figure that is no number becomes null.
Json cliff_json(const CliffRow& row) {
  const Function& f = *row.function;
  Json json{{"name", f.name},
            {"family", f.family},
            {"type", f.type.name},
            {"grade", f.grade.empty() ? Json() : Json(f.grade)},
            {"ordinary", row.ordinary},
            {"loop_of_one", row.loop_of_one},
            {"classes", Json::object()},
            {"calls", Json::object()}};
  for (const Cliff& cliff : row.cliffs)
    json["classes"][cliff.name] = {{"one_percent", cliff.one_percent / row.ordinary},
                                   {"all", cliff.all / row.ordinary}};
  for (const auto& [length, cycles] : row.calls) json["calls"][std::to_string(length)] = cycles;
  return json;
}

static std::string csv_number(double value) {
  return std::isnan(value) ? "" : fmt::format("{:.3f}", value);
}

std::string cliffs_csv(const std::vector<CliffRow>& rows) {
  std::string text = "name,class,one_percent,all\n";
  for (const CliffRow& row : rows) {
    for (const Cliff& cliff : row.cliffs)
      text += fmt::format("{},\"{}\",{},{}\n", row.function->name, cliff.name,
                          csv_number(cliff.one_percent / row.ordinary),
                          csv_number(cliff.all / row.ordinary));
    for (const auto& [length, cycles] : row.calls)
      text += fmt::format("{},\"length {}\",,{}\n", row.function->name, length,
                          csv_number(cycles / length / row.ordinary));
  }
  return text;
}

void print_cliffs(const std::vector<CliffRow>& rows) {
  const auto shown = [](double value) {
    return std::isnan(value) ? std::string("-") : fmt::format("{:.1f}", value);
  };
  fmt::print("{}\n", paint(Colour::strong, fmt::format("{:<22} {:<38} {:>8} {:>8}",
                                                       "times the ordinary", "", "1 %", "all")));
  for (const CliffRow& row : rows) {
    fmt::print("{:<22} {:<38} {:>8} {:>8}\n", row.function->name, "cycles of ordinary ones", "",
               fmt::format("{:.2f}", row.ordinary));
    for (const Cliff& cliff : row.cliffs)
      if (std::fmax(cliff.all, cliff.one_percent) >= kShown * row.ordinary)
        fmt::print("{:<22} {:<38} {:>8} {:>8}\n", "", cliff.name,
                   shown(cliff.one_percent / row.ordinary), shown(cliff.all / row.ordinary));
    std::string lengths;
    for (const auto& [length, cycles] : row.calls)
      lengths += fmt::format(" {}: {:.0f}", length, cycles);
    fmt::print("{:<22} cycles of a call by length:{}; loop of one: {}\n", "", lengths,
               shown(row.loop_of_one));
  }
  fmt::print("\nClasses at or above {:g} times the ordinary; --csv and --json have all.\n", kShown);
}
