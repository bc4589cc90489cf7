// SPDX-License-Identifier: MIT
//
// luxvm list: the functions of the library.
#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/command_line.h"
#include "cli/json_formats.h"

#include <fmt/format.h>

static Json as_json(const Function& f) {
  Json entry{{"name", f.name},      {"family", f.family},    {"type", f.type.name},
             {"grade", f.grade},    {"shape", f.shape.name}, {"row", f.row},
             {"variant", f.variant}};
  if (f.grade.empty()) entry["grade"] = entry["row"] = entry["variant"] = nullptr;
  return entry;
}

static void print_line(const Function& f) {
  const std::string row = f.row < 0 ? "-" : std::to_string(f.row);
  const std::string variant = f.variant < 0 ? "-" : std::to_string(f.variant);
  fmt::print("{:<22} {:<5} {:<6} {:>3} {:>7}\n", f.name, f.type.name, f.shape.name, row, variant);
}

static void list(const std::vector<std::string>& patterns, bool json) {
  const std::vector<const Function*> shown = find_functions(patterns);
  if (json) {
    Json functions = Json::array();
    for (const Function* function : shown) functions.push_back(as_json(*function));
    return print_json({{"format", format_json("luxvm-list")}, {"functions", functions}});
  }
  fmt::print("{}\n", paint(Colour::strong, "name                   type  shape  row variant"));
  for (const Function* function : shown) print_line(*function);
  fmt::print("{} function{}\n", shown.size(), shown.size() == 1 ? "" : "s");
}

void add_list(Program& program) {
  struct Options {
    std::vector<std::string> patterns;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  Command* command = program.add_subcommand("list", "Show the functions of the library");
  command->add_option("pattern", options->patterns, "Which functions; all of them by default");
  command->add_flag("--json", options->json, "Write JSON");
  command->footer(
      std::string(kPatternHelp) +
      "The shape says sources_destinations; 2_1_1 is source, scalar, destination. Row and\n"
      "variant place the function in the cost table that decides on threads.\n"
      "Examples:\n"
      "  luxvm list\n"
      "  luxvm list 64f\n"
      "  luxvm list 'luxs*_32f_A24' --json");
  command->callback([options] { list(options->patterns, options->json); });
}
