// SPDX-License-Identifier: MIT
//
// luxvm check: whether the library that is loaded is whole and computes what it should.
#include "conformance/result_hash.h"
#include "conformance/special_values.h"
#include "catalog/thread_count.h"
#include "catalog/lookup.h"
#include "cli/check_paths.h"
#include "cli/cli.h"
#include "cli/command_line.h"
#include "cli/files.h"
#include "cli/json_formats.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <optional>
#include <vector>

struct CheckOptions {
  std::vector<std::string> patterns;
  std::string publish;
  bool verbose = false, json = false;
  bool paths = false;
  PathsOptions of_paths;
};

// How the results compare with the published ones.
enum class Verdict { same, differ, differ_by_processor, unpublished };

struct Checked {
  const Function* function;
  bool present;
  std::string path;  // the file that the function comes from
  bench::SpecialOutcome special;
  int64_t elements = 0;
  uint64_t hash = 0;
  std::optional<uint64_t> published;
  bool processor_dependent = false;
  Verdict verdict = Verdict::unpublished;
  std::vector<std::string> moved_by;  // what the results must not depend on, and do

  bool passed() const {
    return present && special.failures.empty() && verdict != Verdict::differ && moved_by.empty();
  }
};

struct Summary {
  std::string library, core;
  std::vector<std::string> missing;  // exports that are no vector functions
  std::vector<Checked> functions;

  bool passed() const {
    return missing.empty() && std::all_of(functions.begin(), functions.end(),
                                          [](const Checked& c) { return c.passed(); });
  }
  template <class Predicate>
  int64_t count(Predicate predicate) const {
    return std::count_if(functions.begin(), functions.end(), predicate);
  }
  template <class Number>
  int64_t sum(Number number) const {
    int64_t total = 0;
    for (const Checked& c : functions) total += number(c);
    return total;
  }
};

// ---- What is loaded

static std::string file_of(const void* address) {
  Dl_info info;
  if (!address || !dladdr(address, &info) || !info.dli_fname) return "";
  const std::unique_ptr<char, void (*)(void*)> whole(realpath(info.dli_fname, nullptr), free);
  return whole ? whole.get() : info.dli_fname;
}

// What a call reaches; the name may come from a library that stands before this one.
static const void* loaded(std::string_view name) { return dlsym(RTLD_DEFAULT, name.data()); }

constexpr std::string_view kOtherExports[] = {
#define LUX_EXPORT(name) #name,
#include "core/exports.def"
};

// This program's own noxsError and noxdError must not be taken for the library's.
static std::vector<std::string> missing_exports(const std::string& library) {
  void* const handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  std::vector<std::string> missing;
  for (const std::string_view name : kOtherExports)
    if (!handle || !dlsym(handle, name.data())) missing.emplace_back(name);
  return missing;
}

// ---- The checks

struct Variation {
  const char* name;
  bench::Conditions conditions;
};
static const Variation kVariations[] = {
    {"the arrays' alignment", {.offset = 1}},
    {"the caller's precision", {.x87_control = 0x007F}},
    {"the caller's MXCSR", {.mxcsr = 0xDF80}},  // towards +infinity, flush to zero
    {"the caller's x87 rounding", {.x87_control = 0x0B7F}}};

static std::vector<std::string> what_moves(const Function& f, const std::string& results) {
  std::vector<std::string> moved;
  for (const Variation& v : kVariations) {
    // NearbyInt and Rint round as the caller says.
    const bool rounding = v.conditions.x87_control & 0x0C00;
    if (f.counts && rounding) continue;
    // Blocks with a special element are computed under the caller's x87 control word, as
    // documented.
    if (has_special_blocks(f) && v.conditions.x87_control != bench::Conditions().x87_control)
      continue;
    if (bench::fixed_results(f, v.conditions).bytes != results) moved.push_back(v.name);
  }
  constexpr int32_t kThreads = 2;
  if (!bench::same_over_threads(f, kThreads, min_n(f, kThreads)).value_or(true))
    moved.push_back("the number of threads");
  return moved;
}

static Verdict compare(const Checked& c) {
  if (!c.published) return Verdict::unpublished;
  if (*c.published == c.hash) return Verdict::same;
  return c.processor_dependent ? Verdict::differ_by_processor : Verdict::differ;
}

static Checked check_function(const Function& f) {
  Checked c{};
  c.function = &f;
  const void* const address = loaded(f.name);
  c.present = address;
  c.published = bench::published_hash(f);
  c.processor_dependent = bench::processor_dependent(f);
  if (!c.present) return c;
  c.path = file_of(address);
  c.special = bench::check_special_values(f);
  const bench::FixedResults results = bench::fixed_results(f);
  c.elements = results.elements;
  c.hash = results.hash();
  c.verdict = compare(c);
  c.moved_by = what_moves(f, results.bytes);
  return c;
}

static Summary check_all(const std::vector<std::string>& patterns) {
  const std::vector<const Function*> chosen = find_functions(patterns);
  Summary summary;
  summary.library = file_of(loaded("luxvmGetLibVersion"));
  summary.core = file_of(loaded("threads_omp_of_n_lux"));
  summary.missing = missing_exports(summary.library);
  for (const Function* f : chosen) summary.functions.push_back(check_function(*f));
  return summary;
}

// ---- Telling

static std::string hash_text(uint64_t hash) { return fmt::format("0x{:016X}", hash); }

static const char* verdict_text(Verdict verdict) {
  switch (verdict) {
    case Verdict::same:
      return "as published";
    case Verdict::differ:
      return "differ from the published ones";
    case Verdict::differ_by_processor:
      return "differ, as processors may";
    default:
      return "unpublished";
  }
}

// Lines about one function, worst first; what the verbose table says stands there.
static std::vector<std::string> remarks(const Checked& c, const Summary& summary, bool verbose) {
  const auto bad = [](const std::string& text) { return paint(Colour::bad, "FAILED ") + text; };
  const auto note = [](const std::string& text) {
    return paint(Colour::warning, "note   ") + text;
  };
  if (!c.present) return {bad("missing in the library")};
  std::vector<std::string> lines;
  constexpr size_t kShown = 4;
  const auto& failures = c.special.failures;
  for (size_t i = 0; i < failures.size() && i < kShown; ++i)
    lines.push_back(bad(failures[i].substr(c.function->name.size())));  // which stands before it
  if (failures.size() > kShown)
    lines.push_back(
        bad(fmt::format("... {} rows more (--json has them all)", failures.size() - kShown)));
  if (c.verdict == Verdict::differ)
    lines.push_back(bad(fmt::format("results differ from the published ones: hash {}, not {}",
                                    hash_text(c.hash), hash_text(*c.published))));
  for (const std::string& cause : c.moved_by) lines.push_back(bad("results depend on " + cause));
  if (!verbose && c.verdict == Verdict::differ_by_processor)
    lines.push_back(
        note("results differ from the published ones, as they may on another processor"));
  if (!verbose && c.verdict == Verdict::unpublished)
    lines.push_back(note("results are unpublished"));
  if (c.path != summary.library) lines.push_back(note("comes from " + c.path));
  return lines;
}

static void print_functions(const Summary& summary, bool verbose) {
  if (verbose)
    fmt::print("{}\n",
               paint(Colour::strong, fmt::format("{:<22} {:>5} {:>8} {:<18}  {}", "function",
                                                 "rows", "elements", "hash", "results")));
  for (const Checked& c : summary.functions) {
    const std::vector<std::string> lines = remarks(c, summary, verbose);
    if (verbose)
      fmt::print("{:<22} {:>5} {:>8} {:<18}  {}\n", c.function->name, c.special.rows, c.elements,
                 c.present ? hash_text(c.hash) : "-",
                 c.present ? verdict_text(c.verdict) : "missing");
    for (const std::string& line : lines)
      fmt::print("{:<22} {}\n", verbose ? "" : c.function->name, line);
  }
}

static std::string version_text() {
  const LibraryVersion* v = luxvmGetLibVersion();
  return fmt::format("version {}, build {}.{}.{}.{}, built {}", v->version, v->major, v->minor,
                     v->major_build, v->build, v->build_date);
}

static void print_summary(const Summary& s, bool verbose) {
  fmt::print("library         {}\n                {}\n", s.library, version_text());
  fmt::print("core library    {}\n", s.core);
  print_functions(s, verbose);
  for (const std::string& name : s.missing)
    fmt::print("{:<22} {}missing in the library\n", name, paint(Colour::bad, "FAILED "));
  const size_t total = s.functions.size();
  fmt::print("functions       {} of {} present\n", s.count([](auto& c) { return c.present; }),
             total);
  fmt::print("special values  {} rows in {} calls, {} rows wrong\n",
             s.sum([](auto& c) { return c.special.rows; }),
             s.sum([](auto& c) { return c.special.cases; }),
             s.sum([](auto& c) { return c.special.failures.size(); }));
  fmt::print("results         {} elements, {} functions as published",
             s.sum([](auto& c) { return c.elements; }),
             s.count([](auto& c) { return c.verdict == Verdict::same; }));
  for (const Verdict v : {Verdict::differ, Verdict::differ_by_processor, Verdict::unpublished})
    if (const int64_t n = s.count([v](auto& c) { return c.present && c.verdict == v; }))
      fmt::print(", {} {}", n, verdict_text(v));
  fmt::print("\n{}\n", s.passed() ? paint(Colour::good, "passed") : paint(Colour::bad, "FAILED"));
}

static Json function_json(const Checked& c) {
  Json entry{{"name", c.function->name},
             {"passed", c.passed()},
             {"present", c.present},
             {"path", c.path},
             {"special_rows", c.special.rows},
             {"special_calls", c.special.cases},
             {"special_failures", c.special.failures},
             {"elements", c.elements},
             {"hash", nullptr},
             {"published", nullptr},
             {"processor_dependent", c.processor_dependent},
             {"results", c.present ? verdict_text(c.verdict) : "missing"},
             {"depends_on", c.moved_by}};
  if (c.present) entry["hash"] = hash_text(c.hash);
  if (c.published) entry["published"] = hash_text(*c.published);
  return entry;
}

static Json summary_json(const Summary& s) {
  const LibraryVersion* v = luxvmGetLibVersion();
  Json document{
      {"format", format_json("luxvm-check")},
      {"passed", s.passed()},
      {"library",
       {{"path", s.library},
        {"version", v->version},
        {"build", fmt::format("{}.{}.{}.{}", v->major, v->minor, v->major_build, v->build)},
        {"build_date", v->build_date}}},
      {"core", {{"path", s.core}, {"threads", bench::thread_count()}}},
      {"missing", s.missing},
      {"functions", Json::array()}};
  for (const Checked& c : s.functions) document["functions"].push_back(function_json(c));
  return document;
}

// ---- Publishing

static void publish(const Summary& summary, const std::string& path) {
  for (const Checked& c : summary.functions)
    if (!c.present || !c.special.failures.empty() || !c.moved_by.empty() || c.special.rows == 0)
      throw CheckFailed(fmt::format("nothing is published: {} {}", c.function->name,
                                    c.special.rows ? "does not pass" : "has no special values"));
  std::string text =
      "// SPDX-License-Identifier: MIT\n"
      "//\n"
      "// A hash of each function's results over fixed arguments. Made by `make hashes`.\n"
      "// clang-format off\n\n";
  for (const Checked& c : summary.functions)
    text += fmt::format("RESULT_HASH({}, {})\n", c.function->name, hash_text(c.hash));
  write_file(path, text + "\n#undef RESULT_HASH\n");
  say(fmt::format("{} hashes written\n", summary.functions.size()));
}

static void check(CheckOptions options) {
  if (options.paths) {
    options.of_paths.patterns = options.patterns;
    options.of_paths.json = options.json;
    return check_paths(options.of_paths);
  }
  if (!options.publish.empty()) require_writable(options.publish);
  const Summary summary = check_all(options.patterns);
  if (!options.publish.empty()) publish(summary, options.publish);
  if (options.json)
    print_json(summary_json(summary));
  else if (options.publish.empty())
    print_summary(summary, options.verbose);
  else
    return;
  if (!summary.passed()) throw CheckFailed("");
}

void add_check(Program& program) {
  auto options = std::make_shared<CheckOptions>();
  Command* command = program.add_subcommand(
      "check", "Test the installed library: exports, special values, results as published");
  Option* pattern =
      command->add_option("pattern", options->patterns, "Which functions; all of them by default");
  command->add_flag("--verbose", options->verbose, "A line for every function, with its hash");
  command->add_flag("--json", options->json, "Write JSON");
  command
      ->add_option("--publish", options->publish,
                   "Write the hashes of all functions to this file, for a release")
      ->type_name("FILE")
      ->excludes(pattern);
  command->add_flag("--paths", options->paths,
                    "Compare instead what the library's own kernels and the wide steps give");
  command->add_flag("--exhaustive", options->of_paths.exhaustive,
                    "With --paths: every single of the functions of one, minutes each");
  command
      ->add_option("--pairs", options->of_paths.pairs,
                   "With --paths: so many pairs of the functions of two")
      ->capture_default_str()
      ->transform(whole_number(1, UINT64_MAX));
  command->footer(
      std::string(kPatternHelp) +
      "Takes a few seconds and ends with exit code 0 when everything passed, 1 when not.\n"
      "Each function gets every special value at every place of short arrays, and fixed arguments\n"
      "that are the same on every machine; a hash of the results is compared with the published\n"
      "one, and they must not depend on alignment, threads or the caller's control words. Where a\n"
      "kernel uses the processor's own approximations, another hash is a note and no failure.\n"
      "Examples:\n"
      "  luxvm check\n"
      "  luxvm check Exp --verbose\n"
      "  luxvm check --paths Exp --exhaustive\n"
      "  LD_LIBRARY_PATH=/opt/luxvm/lib luxvm check --json");
  command->callback([options] { check(*options); });
}
