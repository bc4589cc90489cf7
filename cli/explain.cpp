// SPDX-License-Identifier: MIT
//
// luxvm explain: whether a call would be split over threads, which path its kernel takes, and why.
#include "catalog/paths.h"
#include "catalog/thread_count.h"
#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/command_line.h"
#include "cli/json_formats.h"
#include "cli/machine.h"
#include "cli/numbers.h"

#include <fmt/format.h>

#include <algorithm>

struct ExplainOptions {
  std::string name;
  int32_t n = 0, threads = 0;
  bool json = false;
};

struct Slices {
  int32_t count, chunk, last;
  int32_t team;
};

struct Decision {
  int32_t n, threads, threshold;
  bool above_threshold, enough_per_thread, split;
  Slices slices;  // of the call when it is split
};

// Every slice but the last starts whole blocks of four; without four elements for each there is
// one.
static Slices cut(int32_t n, int32_t threads, int32_t processors) {
  if (threads < 1 || n / threads < 4) return {1, n, n, 1};
  const int32_t chunk = n / threads & ~3;
  return {threads, chunk, n - (threads - 1) * chunk, std::min(threads, std::max(64, processors))};
}

static Decision decide(const Function& function, const ExplainOptions& options,
                       const Machine& machine) {
  Decision d{};
  d.n = options.n;
  d.threads = options.threads;
  d.threshold = min_n(function, options.threads);
  d.above_threshold = d.n > d.threshold;
  d.enough_per_thread = d.n > int64_t(d.threads) * 100;
  // Without a grade there is no wrapper that could split.
  d.split = function.row >= 0 && d.above_threshold && d.enough_per_thread;
  d.slices = d.split ? cut(d.n, d.threads, machine.processors) : Slices{1, d.n, d.n, 1};
  return d;
}

static std::string why_never(const Function& f, const Decision& d, const Machine& m) {
  if (f.row < 0) return "the rounding functions never thread";
  if (f.variant > 1) return "grade A11 never threads";
  if (!m.tuned)
    return fmt::format("threading is tuned for {} and this processor is {}",
                       fmt::join(tuned_vendors(), " and "), m.vendor);
  if (m.processors == 1) return "only one processor is available";
  if (d.threads > m.processors + 1)
    return fmt::format("{} threads are more than {} processors can serve", d.threads, m.processors);
  return "the cost exceeds every length";
}

static std::string why_not_wide(const Function& f, int32_t n) {
  if (!bench::wide_path().taken) return bench::wide_path().why;
  if (!bench::has_wide_step(f)) return "there is no wide step for it";
  if (const int32_t least = bench::wide_path().least_length; n < least)
    return fmt::format("calls are wide from {} elements on", least);
  return "";
}

static void print_path(const Function& f, int32_t n) {
  const std::string why = why_not_wide(f, n);
  fmt::print("path\n  {}\n",
             why.empty() ? "wide: whole blocks of 8 by the step of " + bench::wide_path().file
                         : "the kernel alone: " + why);
}

static Json decision_json(const Function& f, const Decision& d, const Machine& m) {
  Json document{{"format", format_json("luxvm-explain")},
                {"function", f.name},
                {"n", d.n},
                {"threads", d.threads},
                {"threshold", nullptr},
                {"above_threshold", d.above_threshold},
                {"above_100_per_thread", d.enough_per_thread},
                {"split", d.split},
                {"slices",
                 {{"count", d.slices.count},
                  {"length", d.slices.chunk},
                  {"last_length", d.slices.last},
                  {"team", d.slices.team}}},
                {"topology",
                 {{"L", m.logical_per_package},
                  {"K", m.cores_per_package},
                  {"n", m.processors},
                  {"t", m.threads_per_core},
                  {"Q", m.cores},
                  {"P", m.packages},
                  {"hyperthreading", m.hyperthreading},
                  {"clamped", m.clamped}}},
                {"start_cost", m.start_cost},
                {"path", why_not_wide(f, d.n).empty() ? "wide" : "narrow"}};
  if (const std::string why = why_not_wide(f, d.n); !why.empty()) document["narrow_because"] = why;
  if (d.threshold != kNever)
    document["threshold"] = d.threshold;
  else
    document["never_because"] = why_never(f, d, m);
  return document;
}

static void print_topology(const Machine& m) {
  fmt::print("topology\n");
  fmt::print("  L = {} logical processors a package, K = {} cores a package (CPUID 1 and 4)\n",
             m.logical_per_package, m.cores_per_package);
  fmt::print("  n = {} processors available to this process\n", m.processors);
  if (m.hyperthreading)
    fmt::print("  t = L / K = {} a core, Q = n / t = {} cores, P = Q / K = {} packages{}\n",
               m.threads_per_core, m.cores, m.packages, m.clamped ? " (raised to at least 1)" : "");
  else
    fmt::print("  multi-threading flag clear: Q = P = n = {}\n", m.packages);
  if (m.hyperthreading && m.cores_per_package == 1 && m.logical_per_package > 1)
    fmt::print(
        "  CPUID leaf 4 shows one core a package{}, so all logical processors of a package\n"
        "  count as one core and adding a thread costs the most.\n",
        m.leaf4.eax == 0 ? " (it is empty here, as on many virtual machines)" : "");
}

static void print_cost(const Machine& m) {
  fmt::print("start-up cost of a thread\n");
  if (!m.tuned || m.processors == 1) {
    fmt::print("  none: threading is off on this machine\n");
    return;
  }
  fmt::print(
      "  share of thread pairs on different packages (P-1)(n/P)/(n-1)   = {:.4g}\n"
      "  on different cores of a package             (Q/P-1)(n/Q)/(n-1) = {:.4g}\n"
      "  on the same core                            (n/Q-1)/(n-1)      = {:.4g}\n",
      m.packages_weight, m.cores_weight, m.core_weight);
  fmt::print("  A = 9000 x {:.4g} + 60000 x {:.4g} + 500000 x {:.4g} = {:.0f} cycles\n",
             m.packages_weight, m.cores_weight, m.core_weight, m.start_cost);
}

static void print_threshold(const Function& f, const Decision& d, const Machine& m) {
  fmt::print("threshold\n");
  if (d.threshold == kNever) {
    fmt::print("  never: {}\n", why_never(f, d, m));
    return;
  }
  const double total = double(m.start_cost) * std::max(1, d.threads - 1);
  fmt::print("  A x max(1, T-1) / (cycles an element) = {:.0f} / {:.4g} = {} elements\n", total,
             total / d.threshold, d.threshold);
  fmt::print("  The first call of a function in a process fixes its threshold.\n");
}

static void print_slices(const Slices& s) {
  constexpr int32_t kShown = 8;
  for (int32_t i = 0; i < s.count; ++i) {
    if (s.count > kShown && i == kShown - 2) {
      fmt::print("  ...\n");
      i = s.count - 1;
    }
    const int32_t length = i + 1 < s.count ? s.chunk : s.last;
    fmt::print("  slice {:<4} elements {:>10} to {:>10}  ({})\n", i, int64_t(i) * s.chunk,
               int64_t(i) * s.chunk + length - 1, length);
  }
  fmt::print("  run by at most {} thread{}\n", s.team, s.team == 1 ? "" : "s");
}

static void print_decision(const Decision& d) {
  const auto answer = [](bool yes) { return yes ? "yes" : "no"; };
  fmt::print("decision for n = {} and T = {}\n", d.n, d.threads);
  fmt::print("  n > threshold  {}\n", answer(d.above_threshold));
  fmt::print("  n > 100 T      {} ({})\n", answer(d.enough_per_thread), int64_t(d.threads) * 100);
  fmt::print("  {}\n", d.split ? paint(Colour::good, "split")
                               : paint(Colour::warning, "one call on the calling thread"));
  if (!d.split) return;
  fmt::print("slices\n");
  print_slices(d.slices);
}

static void explain(ExplainOptions options) {
  const Function& function = find_function(options.name);
  if (options.threads == 0) options.threads = bench::thread_count();
  const Machine machine = probe_machine();
  const Decision decision = decide(function, options, machine);
  if (options.json) return print_json(decision_json(function, decision, machine));
  fmt::print(
      "{}  shape {}{}\n", paint(Colour::strong, std::string(function.name)), function.shape.name,
      function.row < 0 ? ""
                       : fmt::format(", cost row {}, variant {}", function.row, function.variant));
  if (function.row >= 0) {
    print_topology(machine);
    print_cost(machine);
  }
  print_threshold(function, decision, machine);
  print_decision(decision);
  print_path(function, options.n);
}

void add_explain(Program& program) {
  auto options = std::make_shared<ExplainOptions>();
  Command* command = program.add_subcommand(
      "explain", "Show whether a call would be split over threads, which path it takes, and why");
  command->add_option("name", options->name, "The function")->required();
  command->add_option("--n", options->n, "Number of elements")
      ->required()
      ->transform(whole_number(1, INT32_MAX));
  command
      ->add_option("--threads", options->threads,
                   "Thread count; one for each available processor by default")
      ->transform(whole_number(1, INT32_MAX));
  command->add_flag("--json", options->json, "Write JSON");
  command->footer(
      "Examples:\n"
      "  luxvm explain luxsExp_32f_A24 --n 1e6\n"
      "  luxvm explain luxsDiv_64f_A53 --n 200000 --threads 3 --json");
  command->callback([options] { explain(*options); });
}
