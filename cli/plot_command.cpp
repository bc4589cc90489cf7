// SPDX-License-Identifier: MIT
//
// luxvm plot: one function drawn, its values, errors and speed.
#include "catalog/thread_count.h"
#include "cli/bench_rows.h"
#include "cli/command_line.h"
#include "cli/curves.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

struct PlotOptions {
  std::string name, range, out;
  std::vector<std::string> from;
  CurveOptions curve;
  bool values = false, error = false, speed = false;
  int milliseconds = 5;
};

// All grades of one family and type, or the one export.
static Grades grades_of(const std::string& name) {
  if (const Function* const function = function_named(name)) return {function};
  const Grades found = find_functions({name});
  std::vector<std::string> kinds;
  for (const Function* f : found) {
    const std::string kind = fmt::format("{}_{}", f->family, f->type.name);
    if (kinds.empty() || kinds.back() != kind) kinds.push_back(kind);
  }
  if (kinds.size() > 1)
    throw Failure(fmt::format(
        "{} stands for {} functions; a plot has one: {}{}", in_quotes(name), kinds.size(),
        fmt::join(kinds.begin(), kinds.begin() + std::min<long>(4, long(kinds.size())), ", "),
        kinds.size() > 4 ? ", ..." : ""));
  return found;
}

// ---- Speed -----------------------------------------------------------------------------------

struct Speed {
  std::vector<BenchRow> rows;
  std::string measured_on;
};

static bool holds(const Grades& grades, const BenchRow& row) {
  return std::find(grades.begin(), grades.end(), row.function) != grades.end();
}

// Of files with several measurements of the function, the one with the most lengths.
static Speed speed_in(const std::vector<std::string>& paths, const Grades& grades) {
  Speed best;
  for (const std::string& path : paths) {
    const BenchFile file = read_bench_file(path);
    Speed speed{{}, measured_on(file.document)};
    for (const BenchRow& row : file.rows)
      if (holds(grades, row) && row.threads == 1 && row.offset == 0 && !row.large &&
          row.special_elements == 0)
        speed.rows.push_back(row);
    if (speed.rows.empty()) continue;
    const bool longer =
        best.rows.empty() || (has_several_lengths(speed.rows) && !has_several_lengths(best.rows));
    if (longer) best = std::move(speed);
  }
  if (best.rows.empty())
    throw Failure(fmt::format("{} {} is not among the figures of {}", grades[0]->family,
                              grades[0]->type.name, fmt::join(paths, ", ")));
  return best;
}

static Speed measured_speed(const Grades& grades, int milliseconds) {
  Speed speed{measure_lengths(grades, {"10", "30", "100", "300", "1000", "3000", "10000", "100000"},
                              milliseconds),
              ""};
  if (speed.rows.empty()) throw Failure("nothing was measured");
  speed.measured_on = machine_and_date();
  return speed;
}

// ---- The command -----------------------------------------------------------------------------

static void plot(PlotOptions options) {
  const Grades grades = grades_of(options.name);
  if (!options.range.empty()) options.curve.range = range_in(options.range, "--range");
  check_second(*grades[0], options.curve.second);
  if (!options.out.empty()) {
    if (!options.out.ends_with(".svg") && !options.out.ends_with(".png"))
      throw Failure(fmt::format("-o takes a name that ends with .svg or .png, not {}",
                                in_quotes(options.out)));
    require_drawable(options.out, "-o");
  }
  if (!options.from.empty() && !options.speed) throw Failure("--from needs --speed");
  if (!options.values && !options.error && !options.speed) options.values = options.error = true;

  std::vector<Panel> panels;
  std::string small_print = machine_and_date();
  options.curve.processors = int(std::max(1u, std::thread::hardware_concurrency()));
  bench::set_thread_count(1);  // the work is divided here
  if (options.values) panels.push_back(value_panel(grades, options.curve));
  if (options.error) panels.push_back(error_panel(grades, options.curve));
  if (options.speed) {
    const Speed speed = options.from.empty() ? measured_speed(grades, options.milliseconds)
                                             : speed_in(options.from, grades);
    if (panels.empty()) {
      if (!options.out.empty()) return draw_bench(options.out, speed.rows, speed.measured_on);
      fmt::print("{}", bench_text(speed.rows, speed.measured_on));
      return;
    }
    if (!has_several_lengths(speed.rows))
      throw Failure("the figures are of one length: --speed must stand alone");
    panels.push_back(speed_panel(speed.rows));
    if (!options.from.empty()) small_print += "; speed: " + speed.measured_on;
  }
  if (options.error) small_print += fmt::format("; {} arguments", options.curve.samples);
  if (!options.out.empty()) return draw(options.out, panels, 1, small_print);
  fmt::print("{}", draw_text(panels, small_print));
}

void add_plot(Program& program) {
  auto options = std::make_shared<PlotOptions>();
  Command* command = program.add_subcommand("plot", "Draw a function's values, errors or speed");
  command->add_option("name", options->name, "An export, or the grades of a family and type")
      ->required();
  command->add_flag("--values", options->values, "The results over the argument");
  command->add_flag("--error", options->error,
                    "The largest error over the argument, each grade beside its promise");
  command->add_flag("--speed", options->speed,
                    "Cycles per element over the length, beside the C library and SLEEF");
  command
      ->add_option("--range", options->range,
                   "First arguments between A and B; -inf:inf is the whole line; the family's "
                   "typical interval by default")
      ->type_name("A:B");
  command->add_option("--second", options->curve.second,
                      "The second source or the scalar, or the imaginary part of a complex "
                      "argument; typical ones by default");
  command->add_option("--samples", options->curve.samples, "Arguments that errors are measured at")
      ->capture_default_str()
      ->transform(whole_number(1000, 50'000'000));
  command->add_option("--milliseconds", options->milliseconds, "Time spent on one figure of speed")
      ->capture_default_str()
      ->transform(whole_number(1, 60'000));
  command
      ->add_option("--from", options->from,
                   "Take the speed from these files of `bench --json` and measure nothing")
      ->type_name("FILE");
  command->add_option("-o,--out", options->out, "An SVG or PNG file; without it the plot is text")
      ->type_name("FILE");
  command->footer(
      std::string(kPatternHelp) +
      "Values and errors are drawn when no flag says what. An error curve is the largest error in\n"
      "each column of the picture. Where the promise is a relative error, so is the curve, in\n"
      "units of 2^-23 or 2^-52. Functions of several real numbers run along the first one; errors\n"
      "take the others at random from their typical intervals, values keep them at one place.\n"
      "Text is as large as the terminal, or 79 by 24 characters.\n"
      "Examples:\n"
      "  luxvm plot Sin_32f\n"
      "  luxvm plot Erfc_64f --error --range 0:27 -o erfc.svg\n"
      "  luxvm plot luxsPow_64f_A53 --values --second 0.5\n"
      "  luxvm plot Exp_64f --speed --from speed.json -o exp.png");
  command->callback([options] { plot(*options); });
}
