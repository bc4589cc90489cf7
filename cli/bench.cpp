// SPDX-License-Identifier: MIT
//
// luxvm bench: core cycles per element, beside the goals and other implementations.
#include "bench/arguments.h"
#include "catalog/paths.h"
#include "catalog/thread_count.h"
#include "cli/bench_child.h"
#include "cli/bench_cliffs.h"
#include "cli/bench_rows.h"
#include "cli/checkpoint.h"
#include "cli/command_line.h"
#include "cli/files.h"
#include "cli/json_file.h"
#include "cli/json_formats.h"
#include "cli/machine.h"
#include "cli/numbers.h"
#include "cli/plot.h"
#include "cli/reports.h"

#include <fmt/format.h>
#include <gnu/libc-version.h>
#include <unistd.h>

#include <cmath>
#include <functional>

constexpr int32_t kMostElements = 20'000'000;
constexpr char kAroundThreshold[] = "threshold";

struct BenchOptions {
  std::vector<std::string> patterns, lengths{"2000"};
  std::vector<int32_t> threads{1}, offsets{0};
  std::string special, json, plot, from;
  bool large = false, compare = false, without_sse2 = false, resume = false;
  bool cliffs = false;
  std::string csv, path = "both";
  int32_t milliseconds = 60, passes = 1;
};

// ---- What the options say --------------------------------------------------------------------

static double parsed_number(const std::string& text, const std::string& what) {
  size_t used = 0;
  double value = NAN;
  try {
    value = std::stod(text, &used);
  } catch (const std::exception&) {
  }
  if (used != text.size() || !std::isfinite(value))
    throw Failure(fmt::format("{} is no {}", text.empty() ? "''" : text, what));
  return value;
}

static int32_t length_in(const std::string& text) {
  const double value = parsed_number(text, "number of elements");
  if (value < 1 || value > kMostElements || value != std::floor(value))
    throw Failure(fmt::format("--n takes whole numbers from 1 to {}, A:B or {}, not {}",
                              kMostElements, kAroundThreshold, text));
  return int32_t(value);
}

// A:B is A, B and 1, 2, 5 times the powers of ten between them.
static std::vector<int32_t> lengths_in(const std::string& text) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos) return {length_in(text)};
  const int32_t first = length_in(text.substr(0, colon)), last = length_in(text.substr(colon + 1));
  if (first > last) throw Failure(fmt::format("--n {} begins above its end", text));
  std::vector<int32_t> lengths{first};
  for (int64_t power = 1; power <= last; power *= 10)
    for (int64_t length : {power, 2 * power, 5 * power})
      if (length > first && length < last) lengths.push_back(int32_t(length));
  if (last > first) lengths.push_back(last);
  return lengths;
}

// "1%" or "100": one element in so many.
static bench::Share share_in(const std::string& text) {
  if (text.empty()) return {};
  constexpr int64_t kParts = 1'000'000;
  const bool percent = text.back() == '%';
  const double value = parsed_number(percent ? text.substr(0, text.size() - 1) : text,
                                     "percentage or count for --special");
  if (percent && value > 0 && value <= 100) {
    const int64_t special = std::llround(value / 100 * kParts);
    if (special > 0) return {special, kParts};
  }
  if (!percent && value >= 1 && value <= kMostElements && value == std::floor(value))
    return {1, int64_t(value)};
  throw Failure(fmt::format(
      "--special takes a percentage above 0 (1%), or COUNT for one element in COUNT, not {}",
      text));
}

// Half the length from which the call is split, the last length that is not, the first that is, and
// on. Empty when it never is.
static std::vector<int32_t> lengths_around_threshold(const Function& function, int32_t threads) {
  const int32_t threshold = min_n(function, threads);
  if (threshold == kNever) return {};
  const int64_t last_whole = std::max<int64_t>(threshold, int64_t(threads) * 100);
  std::vector<int32_t> lengths;
  for (int64_t length :
       {last_whole / 2, last_whole, last_whole + 1, 2 * last_whole, 4 * last_whole})
    if (length >= 1 && length <= kMostElements) lengths.push_back(int32_t(length));
  return lengths;
}

static std::vector<int32_t> lengths_for(const BenchOptions& options, const Function& function,
                                        int32_t threads) {
  std::vector<int32_t> all;
  for (const std::string& text : options.lengths) {
    const auto some =
        text == kAroundThreshold ? lengths_around_threshold(function, threads) : lengths_in(text);
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

static std::vector<const Function*> choose(const BenchOptions& options) {
  std::vector<const Function*> chosen;
  for (const Function* function : find_functions(options.patterns))
    if (!options.large || bench::has_large_arguments(*function)) chosen.push_back(function);
  if (chosen.empty()) throw Failure("no function with a path for large arguments matches");
  return chosen;
}

static void check(const BenchOptions& options) {
  for (const std::string& text : options.lengths)
    if (text != kAroundThreshold) lengths_in(text);
  if (!share_in(options.special).special) return;
  if (options.large) throw Failure("--large leaves no place for --special elements");
}

// ---- One process for each function and thread count ------------------------------------------

static BenchRow measure_point(const Function& function, int32_t threads, int32_t n, int32_t offset,
                              const BenchOptions& options) {
  BenchRow row;
  row.function = &function;
  row.n = n;
  row.threads = threads;
  row.offset = offset;
  row.large = options.large;
  row.split = n > min_n(function, threads) && n > int64_t(threads) * 100;
  const bench::Share share = share_in(options.special);
  row.special_elements = int32_t(share.before(n));

  const bench::Arguments arguments(function, {n, offset, share, options.large});
  start_reports(0);
  function.call(arguments.arrays, n);
  for (const auto& [code, count] : take_reports().by_code)
    row.reports[std::to_string(code)] = count;
  leave_reports_to_the_library();

  const auto calls = [&](const Arrays& arrays, int32_t length) {
    Figure figure = bench::measure(
        [&](int32_t times) {
          for (; times > 0; --times) function.call(arrays, length);
        },
        options.milliseconds);
    figure.minimum /= length;
    figure.median /= length;
    return figure;
  };
  const auto peer = [&](const bench::Peer& other) -> std::optional<Figure> {
    if (!other.run) return {};
    Figure figure = bench::measure([&](int32_t times) { other.run(arguments.arrays, n, times); },
                                   options.milliseconds);
    figure.minimum /= n;
    figure.median /= n;
    return figure;
  };
  row.element = calls(arguments.arrays, n);
  if (row.goal() > 0) row.one_call = calls(arguments.arrays, 1);
  if (options.path == "both" && bench::has_wide_step(function)) {
    bench::take_path(bench::Path::wide);
    row.wide = calls(arguments.arrays, n);
    bench::take_path(bench::Path::narrow);
  }
  if (share.special) {
    const bench::Arguments plain(function, {n, offset, {}, false});
    row.plain = calls(plain.arrays, n);
  }
  if (options.compare)
    for (const Alternative& alternative : kAlternatives)
      row.*alternative.figure = peer(alternative.find(function));
  return row;
}

static void start_on(const BenchOptions& options) {
  bench::take_path(options.path == "wide" ? bench::Path::wide : bench::Path::narrow);
}

using TakeRow = std::function<void(const BenchRow& row)>;

static void measure_in_child(const Function& function, int32_t threads, const BenchOptions& options,
                             const TakeRow& take) {
  run_in_child(
      function,
      [&](const SendLine& send) {
        bench::set_thread_count(threads);
        start_on(options);
        for (int32_t offset : options.offsets)
          for (int32_t n : lengths_for(options, function, threads))
            send(row_json(measure_point(function, threads, n, offset, options)));
      },
      [&](const Json& line) { take(row_from_json(line)); });
}

// ---- The table -------------------------------------------------------------------------------

struct Column {
  std::string title;
  std::function<std::string(const BenchRow& row)> text;
};

static size_t width_of(const Column& column) { return std::max<size_t>(8, column.title.size()); }

static std::string cycles(double value) {
  return std::isnan(value) ? "?" : fmt::format("{:.{}f}", value, value < 99.995 ? 2 : 1);
}

static std::string optional_cycles(const std::optional<Figure>& figure) {
  return figure ? cycles(figure->minimum) : "-";
}

static std::string ratio_text(const BenchRow& row, const std::optional<Figure>& peer) {
  return peer ? fmt::format("{:.2f}", ratio(row, peer)) : "-";
}

struct Shown {
  bool goals, wide;
  std::vector<const Alternative*> alternatives;
};

static Shown shown_by(const BenchOptions& options, const std::vector<const Function*>& functions) {
  const auto any = [&](const auto& holds) {
    return std::any_of(functions.begin(), functions.end(), holds);
  };
  BenchRow row;
  const std::vector<int32_t> lengths = options.lengths[0] == kAroundThreshold
                                           ? std::vector<int32_t>()
                                           : lengths_in(options.lengths[0]);
  row.n = options.lengths.size() == 1 && lengths.size() == 1 ? lengths[0] : 0;
  row.special_elements = !options.special.empty();
  row.large = options.large;
  Shown shown{
      any([&](const Function* f) { return row.function = f, row.goal() > 0; }),
      options.path == "both" && any([](const Function* f) { return bench::has_wide_step(*f); }),
      {}};
  for (const Alternative& alternative : kAlternatives)
    if (options.compare && any([&](const Function* f) { return !!alternative.find(*f).run; }))
      shown.alternatives.push_back(&alternative);
  return shown;
}

// The columns that tell the rows of a run apart, and what was asked for.
static std::vector<Column> columns_for(const BenchOptions& options, Shown shown) {
  std::vector<Column> columns;
  const auto add = [&](bool wanted, const char* title, auto text) {
    if (wanted) columns.push_back({title, text});
  };
  using Row = const BenchRow&;
  add(options.lengths.size() > 1 || options.lengths[0].find_first_of(":t") != std::string::npos,
      "n", [](Row r) { return std::to_string(r.n); });
  add(options.threads.size() > 1, "threads", [](Row r) { return std::to_string(r.threads); });
  add(options.threads.size() > 1 || options.threads[0] > 1, "split",
      [](Row r) { return std::string(r.split ? "yes" : "no"); });
  add(options.offsets.size() > 1, "offset", [](Row r) { return std::to_string(r.offset); });
  add(true, "minimum", [](Row r) { return cycles(r.element.minimum); });
  add(true, "median", [](Row r) { return cycles(r.element.median); });
  add(shown.wide, "wide", [](Row r) { return optional_cycles(r.wide); });
  add(shown.wide, "times", [](Row r) {
    return r.wide ? fmt::format("{:.2f}", r.element.minimum / r.wide->minimum) : "-";
  });
  add(shown.goals, "goal",
      [](Row r) { return r.goal() > 0 ? fmt::format("{:g}", r.goal()) : "-"; });
  add(shown.goals, "call+",
      [](Row r) { return r.one_call ? fmt::format("{:.0f}", r.call_beyond_element()) : "-"; });
  add(!options.special.empty(), "plain", [](Row r) { return optional_cycles(r.plain); });
  add(!options.special.empty(), "special",
      [](Row r) { return r.plain ? fmt::format("{:.0f}", r.cycles_of_a_special_element()) : "-"; });
  for (const Alternative* a : shown.alternatives) {
    add(true, a->title, [figure = a->figure](Row r) { return optional_cycles(r.*figure); });
    add(true, "ratio", [figure = a->figure](Row r) { return ratio_text(r, r.*figure); });
  }
  return columns;
}

static void print_machine(const Json& document, const BenchOptions& options) {
  std::string text = fmt::format("{}, {:.3f} time-stamp ticks per core cycle",
                                 document.value("processor", "unknown processor"),
                                 document.value("ticks_per_cycle", NAN));
  if (options.lengths.size() == 1) text += fmt::format(", n = {}", options.lengths[0]);
  if (options.threads.size() == 1) text += fmt::format(", threads = {}", options.threads[0]);
  if (options.offsets != std::vector<int32_t>{0} && options.offsets.size() == 1)
    text += fmt::format(", offset = {}", options.offsets[0]);
  if (!options.special.empty()) text += fmt::format(", special = {}", options.special);
  if (options.large) text += ", large arguments";
  fmt::print("{}\n\n", text);
}

static void print_header(const std::vector<Column>& columns) {
  std::string line = fmt::format("{:<22}", "cycles per element");
  for (const Column& column : columns)
    line += fmt::format(" {:>{}}", column.title, width_of(column));
  fmt::print("{}\n", paint(Colour::strong, line));
}

static Colour colour_of(const BenchRow& row) {
  constexpr double kFarAbove = 1.15;
  if (row.meets_goal()) return Colour::good;
  return row.element.minimum <= kFarAbove * row.goal() ? Colour::warning : Colour::bad;
}

static void print_row(const BenchRow& row, const std::vector<Column>& columns) {
  fmt::print("{:<22}", row.function->name);
  for (const Column& column : columns) {
    const std::string text = fmt::format(" {:>{}}", column.text(row), width_of(column));
    fmt::print("{}",
               row.goal() > 0 && column.title == "minimum" ? paint(colour_of(row), text) : text);
  }
  if (row.element.dropped > row.element.kept)
    fmt::print("{}", paint(Colour::warning, "  unsteady clock"));
  fmt::print("\n");
  fflush(stdout);
}

static void print_names(const char* what, const Json& names) {
  if (names.empty()) return;
  std::string list;
  for (const Json& name : names)
    list += (list.empty() ? "" : ", ") +
            (name.is_array()
                 ? fmt::format("{} than {}", name[0].get<std::string>(), name[1].get<std::string>())
                 : name.get<std::string>());
  fmt::print("{} {}\n", paint(Colour::warning, what), list);
}

static std::string legend_of(const Alternative& alternative) {
  const std::string name = alternative.name;
  const char* const libm =
      bench::sse2_variants_left_out() ? "the C library without its SSE2 variants" : "the C library";
  if (name == "libm") return fmt::format("a plain loop, gcc -m32 -O2, over {}", libm);
  if (name == "libm_sse2")
    return fmt::format(" the same by gcc -m32 -O2 -msse2 -mfpmath=sse, over {}", libm);
  return name == "sleef" ? "its functions for SSE2; AVX2, AVX-512: those for these" : "SLEEF's";
}

static void print_legend(const BenchOptions& options, Shown shown) {
  fmt::print("\n");
  if (shown.goals)
    fmt::print(
        "call+    cycles of a call with one element beyond that element's work (goal {:g})\n",
        bench::call_goal());
  if (shown.wide)
    fmt::print("wide     with the wide steps; the other figures are those of the kernels alone\n");
  if (!options.special.empty())
    fmt::print(
        "plain    the same without special elements; special: cycles that each of them adds\n");
  for (const Alternative* a : shown.alternatives) fmt::print("{:<9}{}\n", a->title, legend_of(*a));
  if (options.compare) fmt::print("ratio    how many times as long it takes, by the minima\n");
}

static void print_summary(const BenchSummary& summary) {
  if (summary.goals < 2) return;
  fmt::print("goals    met by {} of {}\n", summary.met, summary.goals);
  if (summary.mean_of)
    fmt::print(
        "mean     the loop takes {:.2f} times as long (geometric mean over {} real A24 and A53)\n",
        summary.mean_ratio, summary.mean_of);
  print_names("slower than the loop:", summary.slower_than_libm);
  print_names("slower than a higher grade:", summary.lower_grade_slower);
}

// ---- The file --------------------------------------------------------------------------------

static Json settings_json(const BenchOptions& options) {
  return {{"patterns", options.patterns},
          {"n", options.lengths},
          {"threads", options.threads},
          {"offset", options.offsets},
          {"special", options.special},
          {"large", options.large},
          {"compare", options.compare},
          {"without_sse2", options.without_sse2},
          {"milliseconds", options.milliseconds},
          {"passes", options.passes},
          {"path", options.path}};
}

static Json document_for(const BenchOptions& options) {
  const bool no_sse2 = bench::sse2_variants_left_out();
  const Machine machine = probe_machine();
  return {{"format", format_json(options.cliffs ? "luxvm-cliffs" : "luxvm-bench")},
          {"date", today()},
          {"processor", machine.brand},
          {"signature", fmt::format("{:08X}", machine.leaf1.eax)},
          {"compiler", "GCC " __VERSION__},
          {"libm", fmt::format("glibc {}{}", gnu_get_libc_version(),
                               no_sse2 ? " without SSE2 variants" : "")},
          {"sleef", bench::sleef_file()},
          {"library", library_digest()},
          {"ticks_per_cycle", bench::ticks_per_cycle()},
          {"settings", settings_json(options)}};
}

static void write_rows(const std::string& path, Json document, const std::vector<BenchRow>& rows,
                       bool complete) {
  document["format"] = format_json("luxvm-bench");  // files of before had none
  document["complete"] = complete;
  document["rows"] = Json::array();
  for (const BenchRow& row : rows) document["rows"].push_back(row_json(row));
  document["summary"] = summary_json(summarize(rows));
  write_file(path, document.dump(1) + "\n");
}

static void take_settings(BenchOptions& options, const Json& document) {
  const Json& settings = object_in(document, "settings");
  const auto all = [&](const char* key, auto& values) {
    values = array_in(settings, key).get<std::decay_t<decltype(values)>>();
    if (values.empty()) throw BadField(fmt::format("'{}' is empty", key));
  };
  all("n", options.lengths);
  all("threads", options.threads);
  all("offset", options.offsets);
  options.special = text_in(settings, "special");
  options.large = flag_in(settings, "large");
  options.compare = flag_in(settings, "compare");
  options.path = settings.contains("path") ? text_in(settings, "path") : "narrow";
  if (settings.contains("without_sse2")) options.without_sse2 = flag_in(settings, "without_sse2");
  check(options);
}

struct Earlier {
  Json document;
  std::vector<BenchRow> rows;
};

// The file's settings take the place of `options`.
static Earlier read_rows(const std::string& path, BenchOptions& options) {
  const std::string text = read_file(path);
  const auto refuse = [&](const char* why) -> Failure {
    return Failure(fmt::format("{} is not a file that `luxvm bench --json` wrote: {}", path, why));
  };
  try {
    Earlier earlier{parse_json(text), {}};
    require_format(earlier.document, "luxvm-bench");
    for (const Json& row : array_in(earlier.document, "rows"))
      earlier.rows.push_back(row_from_json(row));
    text_in(earlier.document, "processor");
    number_in(earlier.document, "ticks_per_cycle");
    flag_in(earlier.document, "complete");
    take_settings(options, earlier.document);
    return earlier;
  } catch (const BadField& bad) {
    throw refuse(bad.what());
  } catch (const Failure& bad) {
    throw refuse(bad.what());
  } catch (const Json::exception&) {
    throw refuse("a setting is of another kind");
  }
}

BenchFile read_bench_file(const std::string& path) {
  BenchOptions its_own;
  Earlier earlier = read_rows(path, its_own);
  return {std::move(earlier.document), std::move(earlier.rows)};
}

// The rows of an interrupted run, if it is the same run of the same library.
static std::vector<BenchRow> rows_to_resume(const BenchOptions& options, const Json& document) {
  if (!options.resume || access(options.json.c_str(), F_OK) != 0) return {};
  BenchOptions its_own;
  Earlier earlier = read_rows(options.json, its_own);
  for (const char* key : {"library", "processor", "settings", "libm"})
    if (earlier.document.value(key, Json()) != document[key]) return {};
  return earlier.document.value("complete", true) ? std::vector<BenchRow>() : earlier.rows;
}

// ---- The command -----------------------------------------------------------------------------

static void keep_lower(std::optional<Figure>& figure, const std::optional<Figure>& again) {
  if (again && !(figure && figure->minimum <= again->minimum)) figure = again;
}

// Of every figure the pass with the lower minimum: the other one was disturbed more.
static void merge(BenchRow& row, const BenchRow& again) {
  std::optional<Figure> element = row.element;
  keep_lower(element, again.element);
  row.element = *element;
  for (const auto figure : {&BenchRow::plain, &BenchRow::one_call})
    keep_lower(row.*figure, again.*figure);
  for (const Alternative& alternative : kAlternatives)
    keep_lower(row.*alternative.figure, again.*alternative.figure);
  ++row.passes;
}

static BenchRow& add(std::vector<BenchRow>& rows, const BenchRow& row) {
  const auto same = std::find_if(rows.begin(), rows.end(), [&](const BenchRow& other) {
    return row.function == other.function && row.threads == other.threads && row.n == other.n &&
           row.offset == other.offset;
  });
  if (same == rows.end()) return rows.emplace_back(row);
  merge(*same, row);
  return *same;
}

static bool measured(const std::vector<BenchRow>& rows, const Function& function, int32_t threads,
                     int32_t passes) {
  return std::any_of(rows.begin(), rows.end(), [&](const BenchRow& row) {
    return row.function == &function && row.threads == threads && row.passes >= passes;
  });
}

std::vector<BenchRow> measure_lengths(const std::vector<const Function*>& functions,
                                      const std::vector<std::string>& lengths,
                                      int32_t milliseconds) {
  BenchOptions options;
  options.lengths = lengths;
  options.milliseconds = milliseconds;
  options.compare = true;
  options.path = "narrow";
  bench::leave_out_sse2_variants();
  std::vector<BenchRow> rows;
  for (const Function* function : functions)
    measure_in_child(*function, 1, options, [&](const BenchRow& row) { add(rows, row); });
  return rows;
}

static bool has_lengths(const std::vector<const Function*>& functions,
                        const BenchOptions& options) {
  for (const Function* function : functions)
    for (int32_t threads : options.threads)
      if (!lengths_for(options, *function, threads).empty()) return true;
  return false;
}

// As many curves as a plot of several lengths would have.
static void check_curves(const std::vector<const Function*>& functions,
                         const BenchOptions& options) {
  const auto several = [&](const Function* f) {
    return lengths_for(options, *f, options.threads[0]).size() > 1;
  };
  const size_t curves = functions.size() * options.threads.size() * options.offsets.size();
  if (!options.plot.empty() && several(functions[0])) require_few_curves(curves);
}

// The last pass prints its rows; the ones before it only say on a terminal where they are.
static void show_pass(const Function& function, int32_t pass, const BenchOptions& options) {
  if (options.passes == 1 || !isatty(STDERR_FILENO)) return;
  const std::string where = fmt::format("pass {} of {}: {}", pass, options.passes, function.name);
  say(pass < options.passes ? fmt::format("\r{}\033[K", where) : "\r\033[K");
}

static void print_end(const BenchOptions& options, const Shown& shown,
                      const std::vector<BenchRow>& rows) {
  print_legend(options, shown);
  print_summary(summarize(rows));
}

static void measure_all(const BenchOptions& options) {
  check(options);
  const std::vector<const Function*> chosen = choose(options);
  if (!has_lengths(chosen, options))
    throw Failure("none of these functions ever threads here; `luxvm explain` says why");
  check_curves(chosen, options);
  if (options.without_sse2) bench::leave_out_sse2_variants();

  const Json document = document_for(options);
  std::vector<BenchRow> rows = rows_to_resume(options, document);
  const bool quiet = options.json == "-";
  const Shown shown = shown_by(options, chosen);
  const std::vector<Column> columns = columns_for(options, shown);
  const auto print_complete = [&](const BenchRow& row) {
    if (!quiet && row.passes == options.passes) print_row(row, columns);
  };
  if (!quiet) {
    print_machine(document, options);
    print_header(columns);
  }
  for (const BenchRow& row : rows) print_complete(row);
  for (int32_t pass = 1; pass <= options.passes; ++pass)
    for (const Function* function : chosen)
      for (int32_t threads : options.threads) {
        if (measured(rows, *function, threads, pass)) continue;
        show_pass(*function, pass, options);
        measure_in_child(*function, threads, options,
                         [&](const BenchRow& row) { print_complete(add(rows, row)); });
        if (options.resume) write_rows(options.json, document, rows, false);
      }
  if (!quiet) print_end(options, shown, rows);
  if (!options.json.empty()) write_rows(options.json, document, rows, true);
  if (!options.plot.empty()) draw_bench(options.plot, rows, measured_on(document));
}

// The figures of an earlier run, as if they had just been measured.
static void show_earlier(BenchOptions options) {
  const std::vector<const Function*> wanted = find_functions(options.patterns);
  const Earlier earlier = read_rows(options.from, options);
  std::vector<BenchRow> rows;
  std::vector<const Function*> chosen;
  for (const BenchRow& row : earlier.rows) {
    if (std::find(wanted.begin(), wanted.end(), row.function) == wanted.end()) continue;
    rows.push_back(row);
    chosen.push_back(row.function);
  }
  if (rows.empty()) throw Failure(fmt::format("{} holds no function that matches", options.from));
  if (options.json != "-") {
    Shown shown = shown_by(options, chosen);
    shown.alternatives.clear();
    shown.wide = std::any_of(rows.begin(), rows.end(), [](const auto& r) { return !!r.wide; });
    for (const Alternative& a : kAlternatives)
      if (std::any_of(rows.begin(), rows.end(), [&](const auto& r) { return !!(r.*a.figure); }))
        shown.alternatives.push_back(&a);
    const std::vector<Column> columns = columns_for(options, shown);
    print_machine(earlier.document, options);
    print_header(columns);
    for (const BenchRow& row : rows) print_row(row, columns);
    print_end(options, shown, rows);
  }
  if (!options.json.empty())
    write_rows(options.json, earlier.document, rows, earlier.document.value("complete", true));
  if (!options.plot.empty()) draw_bench(options.plot, rows, measured_on(earlier.document));
}

static void measure_cliffs(const BenchOptions& options) {
  if (options.lengths != std::vector<std::string>{"2000"} || !options.special.empty() ||
      options.large || options.compare || options.threads != std::vector<int32_t>{1} ||
      options.offsets != std::vector<int32_t>{0} || !options.plot.empty() ||
      !options.from.empty() || options.resume)
    throw Failure("--cliffs goes with patterns, --milliseconds, --passes, --json and --csv alone");
  if (!options.csv.empty()) require_writable(options.csv);
  const std::vector<const Function*> chosen = find_functions(options.patterns);
  Json document = document_for(options);
  document["settings"] = {{"patterns", options.patterns},
                          {"cliffs", true},
                          {"milliseconds", options.milliseconds},
                          {"passes", options.passes},
                          {"path", options.path}};
  std::vector<CliffRow> rows;
  start_on(options);
  for (int32_t pass = 1; pass <= options.passes; ++pass)
    for (size_t i = 0; i < chosen.size(); ++i) {
      show_pass(*chosen[i], pass, options);
      CliffRow row = measure_cliffs(*chosen[i], options.milliseconds);
      if (pass == 1)
        rows.push_back(std::move(row));
      else
        keep_lower(rows[i], row);
    }
  if (options.json != "-" && options.csv != "-") print_cliffs(rows);
  if (!options.csv.empty()) write_file(options.csv, cliffs_csv(rows));
  document["rows"] = Json::array();
  for (const CliffRow& row : rows) document["rows"].push_back(cliff_json(row));
  if (!options.json.empty()) write_file(options.json, document.dump(1) + "\n");
}

static void run_bench(const BenchOptions& options) {
  if (options.resume && is_standard_stream(options.json))
    throw Failure("--resume needs the file of --json");
  if (!options.json.empty()) require_writable(options.json);
  if (!options.plot.empty()) require_drawable(options.plot);
  if (options.cliffs) return measure_cliffs(options);
  if (!options.csv.empty()) throw Failure("--csv goes with --cliffs");
  options.from.empty() ? measure_all(options) : show_earlier(options);
}

void add_bench(Program& program) {
  auto options = std::make_shared<BenchOptions>();
  Command* command =
      program.add_subcommand("bench", "Measure core cycles per element of the functions");
  command->add_option("pattern", options->patterns, "Which functions; all of them by default");
  command
      ->add_option("--n", options->lengths,
                   "Elements of each array: numbers, A:B for 1-2-5 steps from A to B, or "
                   "threshold for lengths around that from which calls are split; 2000 by default")
      ->delimited_by_commas();
  command->add_option("--threads", options->threads, "Threads that a call may use; 1 by default")
      ->delimited_by_commas()
      ->transform(whole_number(1, 1024));
  command->add_option("--special", options->special,
                      "Special elements among them: a percentage (1%), or COUNT for one in COUNT");
  command
      ->add_option("--offset", options->offsets,
                   "Bytes of every array beyond a cache line's start; 0 by default")
      ->delimited_by_commas()
      ->transform(whole_number(0, 4096));
  command
      ->add_option(
          "--path", options->path,
          "narrow: the kernels alone, wide: with the wide steps, where there are any, both: "
          "these beside the other figures")
      ->capture_default_str()
      ->check_is_member({"narrow", "wide", "both"});
  command->add_flag("--large", options->large,
                    "Arguments that all miss the fast reduction of sine, cosine and tangent");
  command->add_flag("--compare", options->compare,
                    "Also plain loops over the C library, and SLEEF if it is installed");
  command->add_flag(
      "--without-sse2", options->without_sse2,
      "Let the C library leave out its SSE2 variants, as on a processor without them");
  command->add_option("--milliseconds", options->milliseconds, "Time spent on one figure")
      ->capture_default_str()
      ->transform(whole_number(1, 60'000));
  command
      ->add_option("--passes", options->passes,
                   "Measure everything so often, at different times, and show the least disturbed")
      ->capture_default_str()
      ->transform(whole_number(1, 100));
  command->add_option("--json", options->json,
                      "File for the figures; - writes them to the standard output, and no table");
  command->add_option("--plot", options->plot,
                      "SVG or PNG file for bars, or for curves where there are several lengths");
  command->add_flag("--cliffs", options->cliffs,
                    "What special classes of arguments and short arrays cost, as multiples of the "
                    "ordinary");
  command->add_option("--csv", options->csv, "File for the table of --cliffs; - as for --json");
  command->add_flag("--resume", options->resume,
                    "Write the --json file after each function, and go on where the same run was "
                    "interrupted");
  command->add_option("--from", options->from,
                      "Measure nothing: show the figures of this --json file");
  command->footer(
      std::string(kPatternHelp) +
      "Figures are core cycles per element, the least and the median of many samples. The "
      "time-stamp\n"
      "counter does not run at the core's clock, so each group of samples stands between two\n"
      "calibrations and is dropped when they disagree. Arguments are those of the family's "
      "typical\n"
      "interval. Goals hold for arrays of about 2000 elements, in cache, none of them special.\n"
      "Examples:\n"
      "  luxvm bench --compare                        every function, beside the C library\n"
      "  luxvm bench Exp --n 1:1000000 --plot exp.svg cycles over the length\n"
      "  luxvm bench Exp_64f --special 1%             what special elements cost\n"
      "  luxvm bench 32f --special 4                  one in every four\n"
      "  luxvm bench Div --offset 0,1,4               arrays at odd addresses\n"
      "  luxvm bench Inv_32f_A24 --n threshold --threads 1,2\n"
      "  luxvm bench Pow --cliffs --csv pow.csv       special classes and short arrays\n"
      "`luxvm formats` describes the JSON's fields.");
  command->callback([options] { run_bench(*options); });
}
