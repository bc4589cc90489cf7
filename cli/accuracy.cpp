// SPDX-License-Identifier: MIT
//
// luxvm accuracy: measured errors beside what is promised.
#include "accuracy/pairs.h"
#include "accuracy/promises.h"
#include "accuracy/record.h"
#include "catalog/thread_count.h"
#include "catalog/lookup.h"
#include "cli/checkpoint.h"
#include "cli/command_line.h"
#include "cli/curves.h"
#include "cli/figures.h"
#include "cli/files.h"
#include "cli/json_formats.h"
#include "cli/numbers.h"
#include "cli/progress.h"
#include "conformance/special_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <thread>

struct AccuracyOptions {
  std::vector<std::string> patterns;
  bench::Sampling sampling;
  std::string range, plot, json, record;
  std::vector<std::string> at;
  bool exhaustive = false, details = false, fresh = false, clear = false;
  int processors = 0;
  uint64_t pairs = 0;
};

// The grades of one family and type: they share arguments and exact values.
using Group = std::vector<const Function*>;

static std::vector<Group> chosen(const AccuracyOptions& options) {
  std::vector<Group> groups;
  for (const Function* f : find_functions(options.patterns)) {
    if (groups.empty() || !groups.back()[0]->is(f->family, f->type.name)) groups.emplace_back();
    groups.back().push_back(f);
  }
  return groups;
}

static void set_range(AccuracyOptions& options) {
  if (options.range.empty()) return;
  const Range range = range_in(options.range, "--range");
  options.sampling.low = range.low;
  options.sampling.high = range.high;
  if (options.exhaustive) throw Failure("--range cannot be combined with --exhaustive");
}

// Every block that a kernel works in is full of the argument, so that it goes the way that ordinary
// elements go.
constexpr int kCopies = 64;

static bench::Argument parse_argument(const std::string& text, const Function& function) {
  bench::Argument argument{};
  int count = 0;
  for (size_t start = 0; start <= text.size(); ++count) {
    const size_t end = std::min(text.find(',', start), text.size());
    std::string why = "too many numbers";
    if (count == bench::Oracle::arguments(function) ||
        !parse_real(text.substr(start, end - start), function.type.width, argument[size_t(count)],
                    why))
      throw Failure(fmt::format("--at {}: {}: {}", in_quotes(text), function.name, why));
    start = end + 1;
  }
  if (count < bench::Oracle::arguments(function))
    throw Failure(fmt::format("--at {}: {} takes {} numbers, with commas between them",
                              in_quotes(text), function.name, bench::Oracle::arguments(function)));
  return argument;
}

static std::vector<bench::Argument> arguments_of(const Function& function,
                                                 const AccuracyOptions& options) {
  if (options.at.empty()) return bench::make_arguments(function, options.sampling);
  std::vector<bench::Argument> all;
  for (const std::string& text : options.at)
    all.insert(all.end(), kCopies, parse_argument(text, function));
  return all;
}

// ---- Measuring

namespace {

class Run {
 public:
  Run(const AccuracyOptions& options, std::vector<Group> groups)
      : options_(options), groups_(std::move(groups)), checkpoint_(key(), options.fresh) {
    Json& content = checkpoint_.content;
    if (!content.contains("finished")) content["finished"] = Json::object();
    if (!content["finished"].is_object()) refuse("'finished' is no object");
    if (checkpoint_.resumed())
      say(fmt::format("going on where an earlier run was interrupted ({} of {} done)\n",
                      content["finished"].size(), groups_.size()));
  }

  Json measure(const std::function<void(const Json&)>& show) {
    Json functions = Json::array();
    for (size_t i = 0; i < groups_.size(); ++i) {
      const Json entries = measure_group(groups_[i], i);
      for (const Json& entry : entries) {
        show(entry);
        functions.push_back(entry);
      }
    }
    return functions;
  }
  [[noreturn]] void refuse(const std::string& why) const { checkpoint_.refuse(why); }
  void finish() const { checkpoint_.remove(); }

 private:
  std::string key() const {
    std::string text =
        fmt::format("accuracy {} {} {} {} {}", options_.sampling.samples, options_.sampling.seed,
                    options_.sampling.low, options_.sampling.high, options_.exhaustive);
    for (const std::string& argument : options_.at) text += " at " + argument;
    for (const Group& group : groups_)
      for (const Function* f : group) text += fmt::format(" {}", f->name);
    return text;
  }

  Json measure_group(const Group& group, size_t index) {
    // No references into the content are kept: an insertion moves its members.
    const std::string name(group[0]->name);
    if (const Json& finished = checkpoint_.content["finished"]; finished.contains(name)) {
      if (!finished[name].is_array() || finished[name].size() != group.size())
        checkpoint_.refuse("'finished' is of another shape");
      return finished[name];
    }
    const bool exhaustive = options_.exhaustive && bench::has_exhaustive_run(*group[0]);
    const std::vector<bench::Statistics> statistics =
        exhaustive ? exhaust(group) : sample(group, index);
    Json entries = Json::array();
    for (size_t g = 0; g < group.size(); ++g) {
      Json entry = bench::report_of(*group[g], statistics[g], exhaustive);
      if (!options_.at.empty()) entry["method"] = "named";
      const bench::SpecialOutcome special = bench::check_special_values(*group[g]);
      entry["special_values"] = {
          {"rows", special.rows}, {"cases", special.cases}, {"failures", special.failures}};
      entries.push_back(entry);
    }
    checkpoint_.content["finished"][name] = entries;
    checkpoint_.content.erase("partial");
    checkpoint_.save();
    return entries;
  }

  static std::string label(const Group& group) {
    return fmt::format("{} {}", group[0]->family, group[0]->type.name);
  }

  void stop_if_interrupted() const {
    if (!Interrupt::requested) return;
    const std::string& kept = checkpoint_.path();
    throw Interrupted(
        kept.empty()
            ? "interrupted; nothing was kept"
            : fmt::format("interrupted; the same command goes on from here (kept in {})", kept),
        Interrupt::signal_number);
  }

  std::vector<bench::Statistics> sample(const Group& group, size_t index) {
    const std::vector<bench::Argument> arguments = arguments_of(*group[0], options_);
    if (arguments.empty()) throw Failure("no argument lies in that range");
    Progress progress(fmt::format("{}/{} {}", index + 1, groups_.size(), label(group)),
                      arguments.size(), Progress::kShare);
    const auto statistics = bench::survey(
        group, arguments, options_.processors,
        [&](uint64_t done, uint64_t) { progress.reach(done); }, Interrupt::requested);
    stop_if_interrupted();
    return statistics;
  }

  bench::Exhaustion kept_part(const Group& group) const {
    const bench::Exhaustion part = bench::exhaustion_of(checkpoint_.content.at("partial"));
    bool whole = part.done.size() == size_t(bench::Exhaustion::kSlices) &&
                 (part.statistics.empty() || part.statistics.size() == group.size());
    for (const bench::Statistics& s : part.statistics) {
      whole &= s.envelope.size() == size_t(bench::kEnvelope);
      for (const auto* cases : {&s.worst, &s.mismatched}) {
        whole &= cases->size() <= size_t(bench::kWorst);
        for (const bench::Case& c : *cases)
          whole &= c.result >= 0 && c.result < bench::Oracle::results(*group[0]);
      }
    }
    if (!whole) checkpoint_.refuse("'partial' is of another shape");
    return part;
  }

  std::vector<bench::Statistics> exhaust(const Group& group) {
    bench::Exhaustion exhaustion;
    if (checkpoint_.content.contains("partial")) exhaustion = kept_part(group);
    Progress progress(label(group), bench::Exhaustion::kSlices, Progress::kShare);
    bench::exhaust(
        group, exhaustion, options_.processors,
        [&](uint64_t done, uint64_t) { progress.reach(done); },
        [&] {
          checkpoint_.content["partial"] = bench::record_of(exhaustion);
          checkpoint_.save();
        },
        Interrupt::requested);
    stop_if_interrupted();
    return exhaustion.statistics;
  }

  const AccuracyOptions& options_;
  std::vector<Group> groups_;
  Checkpoint checkpoint_;
};

}  // namespace

// ---- Showing

static std::string verdict(const Json& entry, const char* key) {
  if (!entry.contains(key)) return "-";
  const Json& judged = entry.at(key);
  const bool met = judged.at("met");
  return paint(
      met ? Colour::good : Colour::bad,
      fmt::format("{:<16}", judged.at("bound").get<std::string>() + (met ? "" : " MISSED")));
}

static std::string joined(const Json& arguments) {
  std::string text;
  for (const Json& argument : arguments)
    text += (text.empty() ? "" : " ") + argument.get<std::string>();
  return text;
}

static std::string special_text(const Json& entry) {
  const Json& special = entry.at("special_values");
  const size_t failures = special.at("failures").size();
  const std::string cases = fmt::format("{} rows", special.at("rows").get<int>());
  return failures ? paint(Colour::bad, fmt::format("{}, {} WRONG", cases, failures)) : cases;
}

static void show_header() {
  fmt::print("{}\n", paint(Colour::strong,
                           fmt::format("{:<22} {:>11} {:>9} {:>8} {:<16} {:<16} {:<13} {}",
                                       "function", "results", "max ulp", "mean", "guaranteed",
                                       "goal", "special", "largest error at")));
}

static void show_line(const Json& entry) {
  const Json& worst = entry.at("worst");
  fmt::print("{:<22} {:>11} {:>9.4f} {:>8.4f} {} {} {:<13} {}\n",
             entry.at("name").get<std::string>(), entry.at("count").get<uint64_t>(),
             entry.at("max_ulp").get<double>(), entry.at("mean_ulp").get<double>(),
             verdict(entry, "guarantee"), verdict(entry, "goal"), special_text(entry),
             worst.empty() ? "-" : joined(worst.at(0).at("arguments")));
  if (const uint64_t wrong = entry.at("mismatches"); wrong > 0)
    fmt::print("  {}\n",
               paint(Colour::bad,
                     fmt::format("{} results of the wrong class (NaN, infinity, sign of "
                                 "zero), first at {}",
                                 wrong, joined(entry.at("mismatched").at(0).at("arguments")))));
  fflush(stdout);
}

static void show_details(const std::string& names, const Json& entry) {
  fmt::print("\n{}: {}, {} results\n", paint(Colour::strong, names),
             entry.at("method").get<std::string>(), entry.at("count").get<uint64_t>());
  if (const uint64_t others = entry.value("not_nearest", uint64_t(0)); others > 0)
    fmt::print("  {} results are not the nearest number\n", others);
  else
    fmt::print("  correctly rounded: every result is the nearest number\n");
  fmt::print("  relative error at most 2^{:.2f}; {:.4f} ulp among subnormal results\n",
             std::log2(entry.at("max_relative").get<double>()),
             entry.at("max_ulp_subnormal_results").get<double>());
  if (entry.contains("max_normwise"))
    fmt::print("  distance in the plane at most 2^{:.2f} of the result\n",
               std::log2(entry.at("max_normwise").get<double>()));
  if (entry.contains("exceptions"))
    fmt::print("  {} results among the documented exceptions, up to {:.4g} ulp\n",
               entry.at("exceptions").at("count").get<uint64_t>(),
               entry.at("exceptions").at("max_ulp").get<double>());
  for (const Json& failure : entry.at("special_values").at("failures"))
    fmt::print("  {}\n", paint(Colour::bad, failure.get<std::string>()));
  fmt::print("  ten worst             ulp  result  (nearest number)\n");
  for (const Json& worst : entry.at("worst"))
    fmt::print("    {:<20} {:.6f}  {}  ({})\n", joined(worst.at("arguments")),
               worst.at("ulp").get<double>(), worst.at("result").get<std::string>(),
               worst.at("nearest").get<std::string>());
  fmt::print("  error up to    share\n");
  const double count = entry.at("count");
  for (const Json& part : entry.at("histogram"))
    if (const double share = part.at("count").get<double>() / count; share > 0)
      fmt::print("    {:<10} {:9.4f}%  {}\n",
                 part.at("up_to").is_null() ? "beyond"
                                            : fmt::format("{:g}", part.at("up_to").get<double>()),
                 100 * share, std::string(size_t(std::lround(40 * share)), '#'));
  fmt::print("  first argument          results    max ulp       mean  at\n");
  for (const Json& range : entry.at("ranges"))
    fmt::print("    {:<18} {:>10} {:>10.4f} {:>10.4f}  {}\n", range.at("range").get<std::string>(),
               range.at("count").get<uint64_t>(), range.at("max_ulp").get<double>(),
               range.at("mean_ulp").get<double>(),
               range.at("max_ulp") == 0 ? "" : joined(range.at("arguments")));
}

// Grades with the same errors are shown once.
static void show_details(const Json& functions) {
  for (size_t i = 0; i < functions.size(); ++i) {
    std::string names = functions[i].at("name");
    const auto same = [&](size_t k) {
      return functions[k].at("family") == functions[i].at("family") &&
             functions[k].at("type") == functions[i].at("type") &&
             functions[k].at("worst") == functions[i].at("worst") &&
             functions[k].at("ranges") == functions[i].at("ranges");
    };
    size_t last = i;
    while (last + 1 < functions.size() && same(last + 1))
      names += ", " + functions[++last].at("grade").get<std::string>();
    show_details(names, functions[i]);
    i = last;
  }
}

// ---- Drawing

// A panel per family and type. The reports have the errors over the whole line; a range is looked
// at more closely.
static void plot_accuracy(const AccuracyOptions& options, const Json& functions) {
  std::vector<Panel> panels;
  for (size_t i = 0; i < functions.size();) {
    Grades grades;
    std::vector<Json> envelopes;
    const Json& first = functions.at(i);
    for (; i < functions.size() && functions.at(i).at("family") == first.at("family") &&
           functions.at(i).at("type") == first.at("type");
         ++i) {
      grades.push_back(&find_function(functions.at(i).at("name").get<std::string>()));
      envelopes.push_back(functions.at(i).at("envelope"));
    }
    CurveOptions curve;
    curve.samples = options.sampling.samples;
    curve.processors = options.processors;
    if (!options.range.empty()) curve.range = range_in(options.range, "--range");
    panels.push_back(curve.range ? error_panel(grades, curve) : error_panel(grades, envelopes));
  }
  draw(options.plot, panels, std::min<int>(3, int(panels.size())), machine_and_date());
}

// ---- The command

static void clear() {
  std::string folder;
  const int removed = Checkpoint::clear(folder);
  if (folder.empty())
    fmt::print("nothing is kept: neither XDG_STATE_HOME nor HOME is the path of a folder\n");
  else
    fmt::print("{} interrupted run{} forgotten in {}\n", removed, removed == 1 ? "" : "s", folder);
}

static void measure_and_tell(const AccuracyOptions& options, Run& run) {
  show_header();
  const Json functions = run.measure(show_line);
  std::vector<std::string> families;
  for (const Json& entry : functions) families.push_back(entry.at("family"));
  const bool one =
      std::count(families.begin(), families.end(), families[0]) == int64_t(families.size());
  if (options.details || one) show_details(functions);
  if (!options.json.empty()) {
    Json document{
        {"format", format_json("luxvm-accuracy")},
        {"kind", "errors"},
        {"library", {{"version", luxvmGetLibVersion()->version}, {"digest", library_digest()}}},
        {"date", today()},
        {"samples", options.sampling.samples},
        {"seed", options.sampling.seed},
        {"functions", functions}};
    if (!options.range.empty()) document["range"] = options.range;
    write_file(options.json, document.dump(1) + "\n");
  }
  if (!options.record.empty())
    record_figures(options.record, functions, options.sampling.whole_line() && options.at.empty());
  if (!options.plot.empty()) plot_accuracy(options, functions);
  run.finish();
  const auto broken = std::count_if(functions.begin(), functions.end(), [](const Json& entry) {
    return !entry.at("guarantee").at("met").get<bool>() ||
           !entry.at("special_values").at("failures").empty();
  });
  if (broken > 0)
    throw CheckFailed(
        fmt::format("{} function{} not keep to the promised accuracy or special values", broken,
                    broken == 1 ? " does" : "s do"));
}

// Nothing of this is kept or recorded: it counts, and says so.
static void try_pairs(const AccuracyOptions& options) {
  bench::set_thread_count(1);
  const Interrupt interrupt;
  uint64_t not_nearest = 0;
  for (const Function* f : find_functions(options.patterns)) {
    if (!bench::has_pairs(*f))
      throw Failure(fmt::format("--pairs: {} is no function of two singles", f->name));
    Progress progress(std::string(f->name), options.pairs, Progress::kShare);
    const bench::PairCount count = bench::try_pairs(
        *f, options.pairs, options.sampling.seed, options.processors,
        [&](uint64_t done, uint64_t) { progress.reach(done); }, Interrupt::requested);
    fmt::print("{}: {} pairs, {} of them left to MPFR; {}\n", f->name, count.tried, count.by_mpfr,
               count.not_nearest == 0
                   ? "correctly rounded: every result is the nearest number"
                   : paint(Colour::bad, fmt::format("{} results are not the nearest number",
                                                    count.not_nearest)));
    for (const bench::Case& wrong : count.wrong)
      fmt::print("  0x{:08X} 0x{:08X} gives 0x{:08X}\n", wrong.argument[0], wrong.argument[1],
                 wrong.got);
    not_nearest += count.not_nearest;
    if (Interrupt::requested) throw Interrupted("interrupted", Interrupt::signal_number);
  }
  if (not_nearest > 0) throw CheckFailed("results are not the nearest numbers");
}

static void accuracy(AccuracyOptions options) {
  if (options.clear) return clear();
  set_range(options);
  if (!options.at.empty() && (options.exhaustive || !options.range.empty()))
    throw Failure("--at cannot be combined with --exhaustive or --range");
  if (!options.json.empty()) require_writable(options.json);
  if (!options.record.empty()) require_recordable(options.record);
  if (!options.plot.empty()) require_drawable(options.plot);
  if (options.processors == 0)
    options.processors = int(std::max(1u, std::thread::hardware_concurrency()));
  if (options.pairs > 0) return try_pairs(options);
  bench::set_thread_count(1);  // the work is divided here
  const std::vector<Group> groups = chosen(options);
  for (const Group& group : groups)
    for (const std::string& text : options.at) parse_argument(text, *group[0]);
  const Interrupt interrupt;
  Run run(options, groups);
  try {
    measure_and_tell(options, run);
  } catch (const Json::exception&) {  // only what was kept can lack anything
    run.refuse("a field is missing or of another kind");
  }
}

void add_accuracy(Program& program) {
  auto options = std::make_shared<AccuracyOptions>();
  Command* command = program.add_subcommand(
      "accuracy", "Measure errors against exact values, beside what is promised");
  Option* pattern =
      command->add_option("pattern", options->patterns, "Which functions; all of them by default");
  command
      ->add_option("--samples", options->sampling.samples,
                   "Arguments per function, besides the steps of its method")
      ->capture_default_str()
      ->transform(whole_number(100, 50'000'000));
  command->add_flag("--exhaustive", options->exhaustive,
                    "All 2^32 arguments of the one-argument 32f functions (others are sampled)");
  command
      ->add_option("--pairs", options->pairs,
                   "Random operands of functions of two singles: count results that are not the "
                   "nearest")
      ->transform(whole_number(1, UINT64_MAX / 2));
  command->add_option("--range", options->range, "Only first arguments between A and B")
      ->type_name("A:B");
  command
      ->add_option("--at", options->at,
                   "Only this argument; the real numbers of one with commas between them")
      ->type_name("NUMBERS");
  command->add_option("--seed", options->sampling.seed, "Of the random arguments")
      ->capture_default_str()
      ->transform(whole_number(0, UINT64_MAX));
  command
      ->add_option("--plot", options->plot,
                   "Draw the largest error over the argument, or over --range")
      ->type_name("FILE");
  command->add_option("--json", options->json, "Write all figures to this file")->type_name("FILE");
  command
      ->add_option("--record", options->record,
                   "Keep the largest errors ever found in this file, until a function's results "
                   "change")
      ->type_name("FILE");
  command->add_flag("--details", options->details,
                    "Ten worst, histogram and ranges of every function (default for one family)");
  command->add_option("--processors", options->processors, "To work on (default: all)")
      ->transform(whole_number(1, 1024));
  command->add_flag("--fresh", options->fresh, "Start anew even if an earlier run was interrupted");
  command->add_flag("--clear", options->clear, "Forget all interrupted runs and measure nothing")
      ->excludes(pattern);
  command->footer(
      std::string(kPatternHelp) +
      "The error is the full distance to the exact value (MPFR, MPC) in units of the last place\n"
      "of the exact value's binade; those of the subnormals are the smallest. Results of another\n"
      "class than the exact value's (NaN, infinity, sign of a zero) are counted apart.\n"
      "An interrupted run goes on when the same command is given again. What it had done is kept "
      "in\n"
      "$XDG_STATE_HOME/luxvm or ~/.local/state/luxvm; without either variable nothing is kept.\n"
      "Exit code 1 when a guarantee or a special value is not kept.\n"
      "Examples:\n"
      "  luxvm accuracy Exp_64f\n"
      "  luxvm accuracy 'luxs*_32f_A24' --samples 20000 --json errors.json\n"
      "  luxvm accuracy Exp_32f --exhaustive --plot exp.svg\n"
      "  luxvm accuracy Exp_64f --range -1:1\n"
      "  luxvm accuracy Pow_64f --at 1.5,-0x1p-3 --record accuracy/figures.json");
  command->callback([options] { accuracy(*options); });
}
