// SPDX-License-Identifier: MIT
//
// luxvm apply: a function over a file or a pipe, in one call.
#include "catalog/thread_count.h"
#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/command_line.h"
#include "cli/files.h"
#include "cli/json_formats.h"
#include "cli/numbers.h"
#include "cli/reports.h"

#include <fmt/format.h>
#include <x86intrin.h>

#include <chrono>

struct ApplyOptions {
  std::string name, in, out, scalar, format;
  std::vector<std::string> columns;
  int32_t threads = 0;
  bool json = false, quiet = false;
};

struct Run {
  int32_t len;
  int32_t threads;
  Status status;
  Reports reports;
  double seconds;
  double cycles;  // of the time-stamp counter
};

static const std::map<std::string, Format> kFormats{
    {"text", Format::text}, {"csv", Format::csv}, {"raw", Format::raw}, {"npy", Format::npy}};

static bool is_split(const Function& function, int32_t len) {
  const int32_t threads = bench::thread_count();
  return len > min_n(function, threads) && len > int64_t(threads) * 100;
}

static Run perform(const Function& function, const Input& input, const std::string& scalar,
                   Output& output) {
  for (int i = 0; i < function.shape.destinations; ++i)
    output.destinations[i].resize(input.sources[0].size());
  const Arrays arrays{{input.sources[0].data(), input.sources[1].data()},
                      {output.destinations[0].data(), output.destinations[1].data()},
                      scalar.data()};
  Run run{};
  run.len = int32_t(input.sources[0].size() / size_t(function.type.bytes()));
  // A process's first call settles the threshold, asks the processor, starts the threads and
  // touches the pages of code and results for the first time, so the second one is timed. No
  // destination is a source.
  function.call(arrays, run.len);
  run.threads = is_split(function, run.len) ? bench::thread_count() : 1;
  start_reports(0);
  const auto start = std::chrono::steady_clock::now();
  const uint64_t first_cycle = __rdtsc();
  run.status = function.call(arrays, run.len);
  run.cycles = double(__rdtsc() - first_cycle);
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  run.reports = take_reports();
  return run;
}

static void print_summary_json(const Function& function, const Run& run) {
  Json reports = Json::array();
  for (const auto& [code, count] : run.reports.by_code)
    reports.push_back({{"code", code}, {"meaning", code_meaning(code)}, {"count", count}});
  const Json document{{"format", format_json("luxvm-apply")},
                      {"function", function.name},
                      {"elements", run.len},
                      {"status", run.status},
                      {"meaning", status_meaning(function, run.status)},
                      {"reports", reports},
                      {"seconds", run.seconds},
                      {"cycles_per_element", run.cycles / run.len},
                      {"threads", run.threads}};
  say(document.dump(2) + "\n");
}

static void print_summary(const Function& function, const Run& run) {
  const bool warned = !function.counts && run.status != LUX_OK;
  const std::string status =
      fmt::format("status {} ({})", run.status, status_meaning(function, run.status));
  say(fmt::format("{}: {} element{}, {}\n", function.name, run.len, run.len == 1 ? "" : "s",
                  paint_stderr(warned ? Colour::warning : Colour::good, status)));
  for (const auto& [code, count] : run.reports.by_code)
    say(fmt::format("  reported {} time{} code {} ({})\n", count, count == 1 ? "" : "s", code,
                    code_meaning(code)));
  say(fmt::format("  {:.6f} s, {:.2f} cycles per element, {}\n", run.seconds, run.cycles / run.len,
                  run.threads == 1 ? "one thread" : fmt::format("{} slices", run.threads)));
}

static void apply(const ApplyOptions& options) {
  const Function& function = find_function(options.name);
  const std::string scalar = parse_scalar(options.scalar, function);
  const bool given = !options.format.empty();
  const Format in = given ? kFormats.at(options.format) : format_of(options.in, Format::text);
  const Format out = given ? in : format_of(options.out, in);
  if (options.threads > 0) bench::set_thread_count(options.threads);

  require_writable(options.out);
  Output output;
  const Input input = read_input({options.in, in, options.columns}, function);
  const Run run = perform(function, input, scalar, output);
  const bool failed = function.counts ? run.status != run.len : run.status < 0;
  if (failed)
    throw Failure(fmt::format("{} failed with status {} ({}); nothing was written", function.name,
                              run.status, status_meaning(function, run.status)));
  write_output(options.out, out, function, output, input.header);
  if (options.quiet) return;
  options.json ? print_summary_json(function, run) : print_summary(function, run);
}

void add_apply(Program& program) {
  auto options = std::make_shared<ApplyOptions>();
  Command* command = program.add_subcommand("apply", "Run a function over a file or a pipe");
  command->add_option("name", options->name, "The function")->required();
  command->add_option("--in", options->in, "File to read; the standard input by default");
  command->add_option("--out", options->out,
                      "File to write, replaced only when the result is complete; the standard "
                      "output by default");
  command->add_option("--format", options->format, "text, csv, raw or npy")
      ->check_is_member({"csv", "npy", "raw", "text"});
  command
      ->add_option("--column", options->columns,
                   "Column of a csv, text or npy file: its number from 1 or its name; once for "
                   "each source, real and imaginary parts of a csv or text count apart")
      ->delimited_by_commas();
  command->add_option("--scalar", options->scalar, "The scalar of a 2_1_1 function");
  command
      ->add_option("--threads", options->threads,
                   "Threads that a call may use; one for each processor by default")
      ->transform(whole_number(1, INT32_MAX));
  command->add_flag("--json", options->json, "Write the summary as JSON");
  command->add_flag("--quiet", options->quiet, "Write no summary");
  command->footer(
      "Formats: without --format the ending of the file names tells (.txt, .csv, .raw or .bin,\n"
      ".npy), otherwise it is text. Functions of two sources read two columns.\n"
      "  text  numbers between blanks, one row a line; empty lines and lines from # on are "
      "skipped\n"
      "  csv   the same between commas; a first line is a header if no field of it begins as a\n"
      "        number does\n"
      "  raw   the elements as they are in memory, pairs of them for two sources\n"
      "  npy   one dimension, or rows and columns, of the function's own type\n"
      "The results have as many columns as the function has destinations. A summary goes to the\n"
      "standard error; its time and cycles are those of a second, equal call.\n"
      "Examples:\n"
      "  seq 1 10 | luxvm apply luxsInv_64f_A53\n"
      "  luxvm apply luxsExp_32f_A24 --in table.csv --column exponent --out result.csv\n"
      "  luxvm apply luxsDiv_64f_A53 --in table.csv --column 3 --column 1 --out quotients.npy");
  command->callback([options] { apply(*options); });
}
