// SPDX-License-Identifier: MIT
//
// What `luxvm bench` measured: its rows, their JSON and what they say together.
#ifndef LUX_CLI_BENCH_ROWS_H
#define LUX_CLI_BENCH_ROWS_H

#include "bench/measure.h"
#include "catalog/goals.h"
#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/plot.h"

#include <optional>

using bench::Figure;

// One function over arrays of one length. Figures are core cycles per element, but one_call.
struct BenchRow {
  const Function* function = nullptr;
  int32_t n = 0, threads = 1, offset = 0;
  int32_t special_elements = 0;
  int32_t passes = 1;             // that the figures are the best of
  bool large = false;             // arguments beyond the fast reduction
  bool split = false;             // over threads
  Json reports = Json::object();  // how many of each code one call gave
  Figure element;
  std::optional<Figure> wide;             // with the wide step, where `element` is without
  std::optional<Figure> plain;            // without the special elements
  std::optional<Figure> one_call;         // cycles of a call with one element
  std::optional<Figure> libm, libm_sse2;  // plain loops as compiled by default and for SSE2
  std::optional<Figure> sleef, sleef_avx2, sleef_avx512;

  // On about 2000 elements none of which is special; 0: none.
  double goal() const;
  bool meets_goal() const;
  double cycles_of_a_special_element() const;
  double call_beyond_element() const;
};

double ratio(const BenchRow& row, const std::optional<Figure>& peer);

// What --compare measures beside a function.
struct Alternative {
  const char *name, *title;  // in JSON, in the table's head
  std::optional<Figure> BenchRow::*figure;
  bench::Peer (*find)(const Function& function);
};
extern const std::vector<Alternative> kAlternatives;

Json row_json(const BenchRow& row);
BenchRow row_from_json(const Json& json);  // a BadField when it is none

// Over the rows that stand beside a goal.
struct BenchSummary {
  int goals = 0, met = 0;
  double mean_ratio = 0;  // geometric, of the real functions' best grades to the C library; 0: none
  int mean_of = 0;
  Json slower_than_libm = Json::array();    // names of graded exports
  Json lower_grade_slower = Json::array();  // by more than kNoise: [lower, higher]
  Json calls_above_goal = Json::array();
};

constexpr double kNoise = 0.05;  // measurements of one computation differ by less

BenchSummary summarize(const std::vector<BenchRow>& rows);
Json summary_json(const BenchSummary& summary);

// What a file of `luxvm bench --json` holds; a Failure if that is none.
struct BenchFile {
  Json document;
  std::vector<BenchRow> rows;
};
BenchFile read_bench_file(const std::string& path);

// Of arrays of these lengths, beside the C library and SLEEF.
std::vector<BenchRow> measure_lengths(const std::vector<const Function*>& functions,
                                      const std::vector<std::string>& lengths,
                                      int32_t milliseconds);

// Cycles over the length where a function was measured at several, otherwise a bar for each export.
constexpr size_t kMostCurves = 16;
void require_few_curves(size_t curves);
bool has_several_lengths(const std::vector<BenchRow>& rows);
Panel speed_panel(const std::vector<BenchRow>& rows);
void draw_bench(const std::string& path, const std::vector<BenchRow>& rows,
                const std::string& small_print);
std::string bench_text(const std::vector<BenchRow>& rows, const std::string& small_print);

// "Intel ..., 2026-12-31": the machine and day of those figures.
std::string measured_on(const Json& document);

#endif
