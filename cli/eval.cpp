// SPDX-License-Identifier: MIT
//
// luxvm eval: one call on the values of the command line.
#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/command_line.h"
#include "cli/json_formats.h"
#include "cli/numbers.h"
#include "cli/reports.h"

#include <fmt/format.h>

struct EvalOptions {
  std::string name, scalar;
  std::vector<std::string> values;
  bool json = false;
};

static Json number_json(uint64_t bits, int width) {
  return {{"decimal", decimal(bits, width)},
          {"hex", hex_float(bits, width)},
          {"bits", bit_pattern(bits, width)}};
}

static Json element_json(const char* element, const ElementType& type) {
  if (type.parts == 1) return number_json(load_bits(element, type.width), type.width);
  return {{"re", number_json(load_bits(element, type.width), type.width)},
          {"im", number_json(load_bits(element + type.width, type.width), type.width)}};
}

static void print_element(const std::string& label, const char* element, const ElementType& type) {
  for (int part = 0; part < type.parts; ++part) {
    const uint64_t bits = load_bits(element + part * type.width, type.width);
    const std::string name = type.parts == 1 ? label : label + (part ? ".im" : ".re");
    fmt::print("  {:<10} {:<24} {:<26} {}\n", name, decimal(bits, type.width),
               hex_float(bits, type.width), bit_pattern(bits, type.width));
  }
}

static std::string numbered(const char* word, int count, int i) {
  return count == 1 ? word : fmt::format("{}{}", word, i + 1);
}

struct Call {
  const Function& function;
  std::string sources[2], scalar, destinations[2];
  int32_t len;
  Status status = 0;
  Reports reports;

  const char* source(int i, int32_t k) const { return &sources[i][k * function.type.bytes()]; }
  const char* result(int i, int32_t k) const { return &destinations[i][k * function.type.bytes()]; }
};

static Call prepare(const EvalOptions& options) {
  Call call{find_function(options.name), {}, {}, {}, 0, 0, {}};
  const Function& f = call.function;
  const int sources = f.shape.sources;
  if (options.values.size() % sources != 0)
    throw Failure(
        fmt::format("{} takes its values in pairs (first and second source), and {} is "
                    "an odd number of them",
                    f.name, options.values.size()));
  call.scalar = parse_scalar(options.scalar, f);
  for (size_t i = 0; i < options.values.size(); ++i)
    parse_element(options.values[i], f.type, call.sources[i % sources]);
  call.len = int32_t(options.values.size() / sources);
  for (int i = 0; i < f.shape.destinations; ++i)
    call.destinations[i].resize(call.sources[0].size());
  return call;
}

static void perform(Call& call) {
  start_reports(call.len);
  const Arrays arrays{{call.sources[0].data(), call.sources[1].data()},
                      {call.destinations[0].data(), call.destinations[1].data()},
                      call.scalar.data()};
  call.status = call.function.call(arrays, call.len);
  call.reports = take_reports();
}

static void print_call_json(const Call& call) {
  const Function& f = call.function;
  Json elements = Json::array(), reports = Json::array();
  for (int32_t k = 0; k < call.len; ++k) {
    Json element{{"sources", Json::array()}, {"results", Json::array()}};
    for (int i = 0; i < f.shape.sources; ++i)
      element["sources"].push_back(element_json(call.source(i, k), f.type));
    for (int i = 0; i < f.shape.destinations; ++i)
      element["results"].push_back(element_json(call.result(i, k), f.type));
    elements.push_back(element);
  }
  for (const Report& report : call.reports.kept)
    reports.push_back({{"code", report.code},
                       {"meaning", code_meaning(report.code)},
                       {"index", report.index},
                       {"name", report.name}});
  Json document{
      {"format", format_json("luxvm-eval")},       {"function", f.name},   {"status", call.status},
      {"meaning", status_meaning(f, call.status)}, {"elements", elements}, {"reports", reports}};
  if (f.shape.scalar) document["scalar"] = element_json(call.scalar.data(), f.type);
  print_json(document);
}

static void print_call(const Call& call) {
  const Function& f = call.function;
  if (f.shape.scalar) print_element("scalar", call.scalar.data(), f.type);
  for (int32_t k = 0; k < call.len; ++k) {
    fmt::print("{}\n", paint(Colour::strong, fmt::format("[{}]", k)));
    for (int i = 0; i < f.shape.sources; ++i)
      print_element(numbered("source", f.shape.sources, i), call.source(i, k), f.type);
    for (int i = 0; i < f.shape.destinations; ++i)
      print_element(numbered("result", f.shape.destinations, i), call.result(i, k), f.type);
  }
  const bool warned = !f.counts && call.status != LUX_OK;
  fmt::print("status  {}\n",
             paint(warned ? Colour::warning : Colour::good,
                   fmt::format("{} ({})", call.status, status_meaning(f, call.status))));
  if (call.reports.kept.empty()) fmt::print("reports none\n");
  for (const Report& report : call.reports.kept)
    fmt::print("report  code {} ({}) at index {}{}\n", report.code, code_meaning(report.code),
               report.index, report.name.empty() ? "" : ", from " + report.name);
}

static void eval(const EvalOptions& options) {
  Call call = prepare(options);
  perform(call);
  options.json ? print_call_json(call) : print_call(call);
  if (call.status < 0)
    throw Failure(fmt::format("{} failed: {}", call.function.name,
                              status_meaning(call.function, call.status)));
}

void add_eval(Program& program) {
  auto options = std::make_shared<EvalOptions>();
  Command* command =
      program.add_subcommand("eval", "Compute values given on the command line, in one call");
  command->add_option("name", options->name, "The function")->required();
  command->add_option("values", options->values, "The elements")->required();
  command->add_option("--scalar", options->scalar, "The scalar of a 2_1_1 function");
  command->add_flag("--json", options->json, "Write JSON");
  command->footer(
      "A value is decimal (-1.5e3), a hex float (0x1.8p1), inf, nan, or a bit pattern: 0x and 8\n"
      "hex digits for 32f, 16 for 64f. Complex values are real,imaginary. Functions of two\n"
      "sources take the values in pairs. Each line of the answer shows a number in decimal, as\n"
      "a hex float and as bits. A report says where the function met a special element.\n"
      "Examples:\n"
      "  luxvm eval luxsExp_64f_A53 1 -745 inf\n"
      "  luxvm eval luxsInv_32f_A24 0 0x7FA00000 0x1p-149\n"
      "  luxvm eval luxsDiv_64f_A53 1 3  2 0\n"
      "  luxvm eval luxsModf_64f -2.75 --json");
  command->callback([options] { eval(*options); });
}
