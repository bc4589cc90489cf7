// SPDX-License-Identifier: MIT
//
// luxbench: what every export costs, beside its goal and the C library.
#include "bench/measure.h"
#include "luxcore.h"

#include <CLI/CLI.hpp>
#include <fmt/chrono.h>
#include <fmt/core.h>
#include <fnmatch.h>
#include <math.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

using bench::Options;
using bench::Result;

constexpr auto kExamples = R"(
Examples:
  luxbench                      every function that is built
  luxbench Exp Inv_64f          what has one of these in its name; * and ? work, too
  luxbench --compare            beside loops over the C library
  luxbench --n 1000000 --threads 2 Exp
  luxbench --special Div        with one special element in every eight
)";

struct Selection {
  std::vector<std::string> patterns;
  int32_t threads = 1;
  std::string json_file, markdown_file;
};

bool selected(const Function& function, const Selection& selection) {
  if (!function.call) return false;
  return selection.patterns.empty() ||
         std::any_of(selection.patterns.begin(), selection.patterns.end(),
                     [&](const auto& pattern) {
                       return fnmatch(("*" + pattern + "*").c_str(), function.name.data(), 0) == 0;
                     });
}

std::string goal_text(const Result& result) {
  return result.goal && result.goal->cycles > 0 ? fmt::format("{:g}", result.goal->cycles) : "-";
}

double libm_ratio(const Result& result) { return result.libm.minimum / result.element.minimum; }

void print_header(const Options& options) {
  fmt::print("{:<24} {:>8} {:>8} {:>6} {:>6} {:>8} {:>8}", "core cycles", "minimum", "median",
             "goal", "/goal", "one call", "beyond");
  fmt::print("{}\n", options.compare ? fmt::format(" {:>8} {:>6}", "libm", "ratio") : "");
}

void print_row(const Result& result, const Options& options) {
  const bool has_goal = result.goal && result.goal->cycles > 0;
  fmt::print("{:<24} {:8.2f} {:8.2f} {:>6} {:>6} {:8.1f} {:8.1f}", result.function->name,
             result.element.minimum, result.element.median, goal_text(result),
             has_goal ? fmt::format("{:.2f}", result.element.minimum / result.goal->cycles) : "-",
             result.single_call.minimum, result.single_call.minimum - result.element.minimum);
  if (options.compare && result.has_libm)
    fmt::print(" {:8.1f} {:6.2f}", result.libm.minimum, libm_ratio(result));
  else if (options.compare)
    fmt::print(" {:>8} {:>6}", "-", "-");
  if (result.dropped > result.kept) fmt::print("  unsteady clock");
  fmt::print("\n");
  fflush(stdout);
}

// How many times as long the C library's loop takes, over the best grades of the real functions.
double mean_ratio(const std::vector<Result>& results) {
  double sum = 0;
  int count = 0;
  for (const Result& result : results) {
    const auto& grade = result.function->grade;
    const bool real = !result.function->type.complex();
    if (!result.has_libm || !real || (grade != "A24" && grade != "A53")) continue;
    sum += log(libm_ratio(result));
    ++count;
  }
  return count ? exp(sum / count) : 0;
}

nlohmann::json figure_json(const bench::Figure& figure) {
  return {{"minimum", figure.minimum}, {"median", figure.median}};
}

void write_file(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

std::string date() { return fmt::format("{:%Y-%m-%d}", fmt::localtime(std::time(nullptr))); }

std::string as_json(const std::vector<Result>& results, const Options& options,
                    const Selection& selection) {
  nlohmann::json rows = nlohmann::json::array();
  for (const Result& result : results) {
    nlohmann::json row = {{"name", result.function->name},
                          {"cycles_per_element", figure_json(result.element)},
                          {"cycles_per_call_of_one", figure_json(result.single_call)},
                          {"dropped_rounds", result.dropped}};
    if (result.goal && result.goal->cycles > 0) row["goal"] = result.goal->cycles;
    if (result.has_libm) row["libm_cycles_per_element"] = figure_json(result.libm);
    rows.push_back(std::move(row));
  }
  const nlohmann::json all = {{"date", date()},
                              {"processor", bench::processor_name()},
                              {"n", options.n},
                              {"threads", selection.threads},
                              {"special_every", options.special_every},
                              {"offset", options.offset},
                              {"functions", std::move(rows)}};
  return all.dump(2) + "\n";
}

std::string as_markdown(const std::vector<Result>& results, const Options& options,
                        const Selection& selection) {
  std::string text = fmt::format(
      "Measured {} on {}, arrays of {} elements, {} thread{}{}{}.\n\n"
      "| Function | Cycles per element: least | median | Goal | Call with one element |{}\n"
      "|---|---:|---:|---:|---:|{}\n",
      date(), bench::processor_name(), options.n, selection.threads,
      selection.threads == 1 ? "" : "s",
      options.special_every ? fmt::format(", one element in {} special", options.special_every)
                            : "",
      options.offset ? fmt::format(", {} bytes off a cache line", options.offset) : "",
      options.compare ? " C library's loop | Ratio |" : "", options.compare ? "---:|---:|" : "");
  for (const Result& result : results) {
    text += fmt::format("| `{}` | {:.2f} | {:.2f} | {} | {:.0f} |", result.function->name,
                        result.element.minimum, result.element.median, goal_text(result),
                        result.single_call.minimum);
    if (options.compare)
      text += result.has_libm
                  ? fmt::format(" {:.1f} | {:.1f} |", result.libm.minimum, libm_ratio(result))
                  : " - | - |";
    text += "\n";
  }
  return text;
}

void run(const Options& options, const Selection& selection) {
  if (std::none_of(std::begin(kFunctions), std::end(kFunctions),
                   [&](const auto& f) { return selected(f, selection); }))
    throw std::runtime_error("no built function has such a name");
  if (luxcoreSetNumThreads(selection.threads) != LUXCORE_OK)
    throw std::runtime_error("the thread count must be at least 1");
  fmt::print("{}, {} elements, {} thread{}, {:.3f} time-stamp ticks per core cycle\n\n",
             bench::processor_name(), options.n, selection.threads,
             selection.threads == 1 ? "" : "s", bench::ticks_per_cycle());
  print_header(options);
  std::vector<Result> results;
  for (const Function& function : kFunctions) {
    if (!selected(function, selection)) continue;
    results.push_back(bench::measure(function, options));
    print_row(results.back(), options);
  }
  if (const double mean = mean_ratio(results); mean > 0)
    fmt::print("\nC library's loops take {:.2f} times as long (geometric mean, A24 and A53)\n",
               mean);
  if (!selection.json_file.empty())
    write_file(selection.json_file, as_json(results, options, selection));
  if (!selection.markdown_file.empty())
    write_file(selection.markdown_file, as_markdown(results, options, selection));
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  Selection selection;
  CLI::App app("Core cycles per element of the library's functions.");
  app.footer(kExamples);
  app.add_option("pattern", selection.patterns, "Part of the names to measure");
  app.add_option("--n", options.n, "Elements of each array")
      ->capture_default_str()
      ->check(CLI::Range(1, 20'000'000));
  app.add_option("--threads", selection.threads, "Threads that a call may use")
      ->capture_default_str()
      ->check(CLI::Range(1, 1024));
  app.add_flag("--special{8}", options.special_every, "One special element in every 8, or =COUNT")
      ->check(CLI::Range(1, 1'000'000));
  app.add_option("--offset", options.offset, "Bytes of each array beyond a cache line's start")
      ->check(CLI::Range(0, 4096));
  app.add_option("--milliseconds", options.milliseconds, "Time spent on one figure")
      ->capture_default_str()
      ->check(CLI::Range(1, 60'000));
  app.add_flag("--compare", options.compare, "Measure the C library's scalar function, too");
  app.add_option("--json", selection.json_file, "Write the figures to this file");
  app.add_option("--markdown", selection.markdown_file, "Write them as a table to this file");
  CLI11_PARSE(app, argc, argv);
  if (options.compare) bench::leave_out_sse2_variants(argv);
  try {
    run(options, selection);
  } catch (const std::exception& error) {
    fmt::print(stderr, "luxbench: {}\n", error.what());
    return 1;
  }
  return 0;
}
