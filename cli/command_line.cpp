// SPDX-License-Identifier: MIT
#include "cli/command_line.h"
#include "catalog/failure.h"
#include "catalog/lookup.h"
#include "cli/numbers.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>

static CLI::Validator validator(const WholeNumbers& numbers) {
  const auto [least, most] = numbers;
  const auto take = [least = least, most = most](std::string& text) -> std::string {
    uint64_t whole = 0;
    if (!parse_whole(text, whole) || whole < least || whole > most)
      return fmt::format("{} is not a whole number from {} to {}", in_quotes(text), least, most);
    text = std::to_string(whole);
    return "";
  };
  return CLI::Validator(take, fmt::format("from {} to {}", least, most));
}

static CLI::Option* add_to(CLI::App& app, const Option& option) {
  if (bool* const* const flag = std::get_if<bool*>(&option.target))
    return app.add_flag(option.name, **flag, option.help);
  CLI::Option* const added =
      std::visit([&](auto* target) { return app.add_option(option.name, *target, option.help); },
                 option.target);
  if (option.is_required) added->required();
  if (option.shows_default) added->capture_default_str();
  if (!option.type.empty()) added->type_name(option.type);
  if (option.in_commas) added->delimiter(',')->allow_extra_args(false);
  if (option.whole_numbers) added->transform(validator(*option.whole_numbers));
  if (option.not_negative) added->check(CLI::NonNegativeNumber);
  if (!option.members.empty()) added->check(CLI::IsMember(option.members));
  return added;
}

static void add_to(CLI::App& app, const Command& command) {
  CLI::App& added = *app.add_subcommand(command.name, command.description);
  std::map<const Option*, CLI::Option*> made;
  for (const Option& option : command.options) {
    made[&option] = add_to(added, option);
    if (option.excluded) made[&option]->excludes(made.at(option.excluded));
  }
  if (!command.footer_text.empty()) added.footer(command.footer_text);
  if (command.is_hidden) added.group("");
  if (command.run) added.callback(command.run);
}

static void require_command(const CLI::App& program, const std::string& name) {
  const auto commands = program.get_subcommands([](const CLI::App*) { return true; });
  const std::string wanted = name.substr(0, 64);
  const auto distance = [&](const CLI::App* c) { return edit_distance(c->get_name(), wanted); };
  const CLI::App* const nearest =
      *std::min_element(commands.begin(), commands.end(),
                        [&](auto* a, auto* b) { return distance(a) < distance(b); });
  if (nearest->get_name() == name) return;
  throw Failure(fmt::format("there is no command {}; did you mean {}? `luxvm help` lists them all",
                            in_quotes(name), nearest->get_name()));
}

// `help` and `help COMMAND` are other words for --help; what is no command is told by its name.
static std::vector<std::string> resolve_help(const CLI::App& program,
                                             const std::vector<std::string>& arguments) {
  const auto is_name = [&](size_t i) {
    return i < arguments.size() && (arguments[i].empty() || arguments[i][0] != '-');
  };
  if (is_name(0)) require_command(program, arguments[0]);
  if (!is_name(0) || arguments[0] != "help") return arguments;
  if (arguments.size() == 1) return {"--help"};
  if (arguments.size() > 2 || !is_name(1)) return arguments;
  require_command(program, arguments[1]);
  return {arguments[1], "--help"};
}

void run_command(const Program& program, const std::vector<std::string>& arguments,
                 const std::function<std::string()>& version) {
  CLI::App app{program.description, program.name};
  app.require_subcommand(1);
  app.set_version_flag("--version", version);
  app.footer(program.footer_text);
  for (const Command& command : program.commands) add_to(app, command);

  std::vector<std::string> reversed = resolve_help(app, arguments);
  std::reverse(reversed.begin(), reversed.end());  // as the parser takes them
  try {
    app.parse(reversed);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {  // --help and --version
      app.exit(error);
      return;
    }
    const auto commands = app.get_subcommands();
    throw Failure(fmt::format("{}; `luxvm help{}{}` tells more", error.what(),
                              commands.empty() ? "" : " ",
                              commands.empty() ? "" : commands[0]->get_name()));
  }
}
