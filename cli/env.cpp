// SPDX-License-Identifier: MIT
//
// luxvm env: what the library's results and its use of threads depend on.
#include "catalog/paths.h"
#include "catalog/thread_count.h"
#include "cli/cli.h"
#include "cli/command_line.h"
#include "cli/json_formats.h"
#include "cli/machine.h"
#include "luxvmk3.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>

struct Flag {
  uint32_t bit;
  const char* name;
};

constexpr Flag kExceptions[] = {{0, "invalid"},  {1, "denormal"},  {2, "zero-divide"},
                                {3, "overflow"}, {4, "underflow"}, {5, "inexact"}};
constexpr const char* kRounding[] = {"to nearest", "down", "up", "toward zero"};
constexpr const char* kPrecision[] = {"24 bits", "reserved", "53 bits", "64 bits"};

struct Controls {
  uint16_t x87;
  uint32_t mxcsr;
};

static Controls read_controls() {
  Controls controls{};
  asm volatile("fnstcw %0" : "=m"(controls.x87));
  asm volatile("stmxcsr %0" : "=m"(controls.mxcsr));
  return controls;
}

static Json set_exceptions(uint32_t bits) {
  Json names = Json::array();
  for (const Flag& flag : kExceptions)
    if (bits >> flag.bit & 1) names.push_back(flag.name);
  return names;
}

static Json version_json() {
  const LibraryVersion* v = luxvmGetLibVersion();
  return {{"name", v->name},
          {"version", v->version},
          {"major", v->major},
          {"minor", v->minor},
          {"major_build", v->major_build},
          {"build", v->build},
          {"target_code", std::string(v->target_code, 2)},
          {"build_date", v->build_date}};
}

static Json leaf_json(const Leaf& leaf) {
  const auto hex = [](uint32_t value) { return fmt::format("0x{:08X}", value); };
  return {{"eax", hex(leaf.eax)},
          {"ebx", hex(leaf.ebx)},
          {"ecx", hex(leaf.ecx)},
          {"edx", hex(leaf.edx)}};
}

static Json processor_json(const Machine& m) {
  return {
      {"vendor", m.vendor},
      {"brand", m.brand},
      {"tuned_vendors", tuned_vendors()},
      {"cpuid", {{"0", leaf_json(m.leaf0)}, {"1", leaf_json(m.leaf1)}, {"4", leaf_json(m.leaf4)}}},
      {"hyperthreading", m.hyperthreading},
      {"logical_per_package", m.logical_per_package},
      {"cores_per_package", m.cores_per_package},
      {"available", m.processors},
      {"cores", m.cores},
      {"packages", m.packages}};
}

static Json controls_json(const Controls& c) {
  return {{"x87",
           {{"word", fmt::format("0x{:04X}", c.x87)},
            {"precision", kPrecision[c.x87 >> 8 & 3]},
            {"rounding", kRounding[c.x87 >> 10 & 3]},
            {"masked", set_exceptions(c.x87)}}},
          {"mxcsr",
           {{"word", fmt::format("0x{:08X}", c.mxcsr)},
            {"rounding", kRounding[c.mxcsr >> 13 & 3]},
            {"flush_to_zero", bool(c.mxcsr >> 15 & 1)},
            {"denormals_are_zero", bool(c.mxcsr >> 6 & 1)},
            {"masked", set_exceptions(c.mxcsr >> 7)},
            {"raised", set_exceptions(c.mxcsr)}}}};
}

static std::string listed(const Json& names) {
  if (names.size() == std::size(kExceptions)) return "all";
  std::string text;
  for (const Json& name : names) text += (text.empty() ? "" : ", ") + name.get<std::string>();
  return text.empty() ? "none" : text;
}

static void print_heading(const char* text) { fmt::print("{}\n", paint(Colour::strong, text)); }

static void print_library() {
  const LibraryVersion* v = luxvmGetLibVersion();
  print_heading("library");
  fmt::print("  {}, version {}, build {}.{}.{}.{}, target {:.2}, built {}\n", v->name, v->version,
             v->major, v->minor, v->major_build, v->build, v->target_code, v->build_date);
}

static void print_leaf(int number, const Leaf& leaf) {
  fmt::print("  CPUID {}         EAX {:08X}  EBX {:08X}  ECX {:08X}  EDX {:08X}\n", number,
             leaf.eax, leaf.ebx, leaf.ecx, leaf.edx);
}

static void print_processor(const Machine& m) {
  print_heading("processor");
  fmt::print("  identification  {} ({})\n", m.vendor, m.brand.empty() ? "no brand text" : m.brand);
  fmt::print("  threading       tuned for {}{}\n", fmt::join(tuned_vendors(), ", "),
             m.tuned ? "" : ": never on this processor");
  print_leaf(0, m.leaf0);
  print_leaf(1, m.leaf1);
  print_leaf(4, m.leaf4);
  fmt::print("  per package     {} logical processors, {} core{}{}\n", m.logical_per_package,
             m.cores_per_package, m.cores_per_package == 1 ? "" : "s",
             m.hyperthreading ? "" : " (multi-threading flag clear, so not used)");
  fmt::print("  available       {} processors, taken as {} core{} in {} package{}\n", m.processors,
             m.cores, m.cores == 1 ? "" : "s", m.packages, m.packages == 1 ? "" : "s");
}

static void print_controls(const Controls& c) {
  const Json all = controls_json(c);
  const Json &x87 = all["x87"], &sse = all["mxcsr"];
  print_heading("control words");
  fmt::print("  x87    0x{:04X}      precision {}, rounding {}, masked: {}\n", c.x87,
             x87["precision"].get<std::string>(), x87["rounding"].get<std::string>(),
             listed(x87["masked"]));
  fmt::print(
      "  MXCSR  0x{:08X}  rounding {}, flush to zero {}, denormals are zero {}, masked: {}\n",
      c.mxcsr, sse["rounding"].get<std::string>(), sse["flush_to_zero"] ? "on" : "off",
      sse["denormals_are_zero"] ? "on" : "off", listed(sse["masked"]));
}

// Where the number of threads comes from. A program's own core library does not tell: null.
static const char* thread_source() {
  void* const tell = dlsym(RTLD_DEFAULT, "luxcoreThreadSource");
  return tell ? reinterpret_cast<const char* (*)()>(tell)() : nullptr;
}

static void print_threads() {
  const char* const source = thread_source();
  fmt::print(
      "{}: {}, {}\n", paint(Colour::strong, "threads"), bench::thread_count(),
      source ? fmt::format("from {}", source) : "and the core library does not tell from where");
}

static Json wide_json() {
  const bench::WidePath& path = bench::wide_path();
  return {{"taken", path.taken},
          {"file", path.file},
          {"why", path.taken ? Json() : Json(path.why)},
          {"exports", std::count_if(std::begin(kFunctions), std::end(kFunctions),
                                    [](const Function& f) { return bench::has_wide_step(f); })}};
}

static void print_wide() {
  const Json wide = wide_json();
  const std::string file = wide["file"];
  fmt::print("{}: {}\n", paint(Colour::strong, "wide steps"),
             wide["taken"]
                 ? fmt::format("for {} functions, from {}", wide["exports"].get<int>(), file)
                 : fmt::format("none: {} ({})", wide["why"].get<std::string>(), file));
}

static void env(bool json) {
  const Controls controls = read_controls();
  const Machine machine = probe_machine();
  if (json) {
    const char* const source = thread_source();
    return print_json({{"format", format_json("luxvm-env")},
                       {"library", version_json()},
                       {"processor", processor_json(machine)},
                       {"wide", wide_json()},
                       {"threads", bench::thread_count()},
                       {"threads_source", source ? Json(source) : Json()},
                       {"controls", controls_json(controls)}});
  }
  print_library();
  print_processor(machine);
  print_wide();
  print_threads();
  print_controls(controls);
}

void add_env(Program& program) {
  auto json = std::make_shared<bool>(false);
  Command* command = program.add_subcommand(
      "env", "Show the library's version, the processor, threads and control words");
  command->add_flag("--json", *json, "Write JSON");
  command->footer("Examples:\n  luxvm env\n  luxvm env --json");
  command->callback([json] { env(*json); });
}
