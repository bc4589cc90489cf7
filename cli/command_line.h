// SPDX-License-Identifier: MIT
//
// What the commands say of themselves: their names, their options and where the values go. The
// parser itself, which takes long to compile, is known to command_line.cpp alone; the members of
// Option and Command have its names.
#ifndef LUX_CLI_COMMAND_LINE_H
#define LUX_CLI_COMMAND_LINE_H

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// Whole numbers between two bounds, in scientific notation too (1e6).
struct WholeNumbers {
  uint64_t least, most;
};
constexpr WholeNumbers whole_number(uint64_t least, uint64_t most) { return {least, most}; }

struct Option {
  using Target = std::variant<bool*, int*, uint64_t*, double*, std::string*, std::vector<int>*,
                              std::vector<std::string>*>;
  std::string name;
  Target target;
  std::string help, type = {};
  bool is_required = false, shows_default = false, in_commas = false, not_negative = false;
  std::optional<WholeNumbers> whole_numbers = {};
  std::vector<std::string> members = {};
  const Option* excluded = nullptr;

  Option* required() { return is_required = true, this; }
  Option* capture_default_str() { return shows_default = true, this; }
  Option* type_name(std::string name) { return type = std::move(name), this; }
  Option* delimited_by_commas() { return in_commas = true, this; }
  Option* transform(WholeNumbers numbers) { return whole_numbers = numbers, this; }
  Option* check_not_negative() { return not_negative = true, this; }
  Option* check_is_member(std::vector<std::string> words) {
    return members = std::move(words), this;
  }
  Option* excludes(const Option* other) { return excluded = other, this; }
};

struct Command {
  std::string name, description, footer_text;
  std::deque<Option> options;  // whose places do not change
  std::function<void()> run;
  bool is_hidden = false;  // from help

  Option* add_option(std::string name, Option::Target target, std::string help) {
    return &options.emplace_back(Option{std::move(name), target, std::move(help)});
  }
  template <class T>
  Option* add_option(std::string name, T& target, std::string help) {
    return add_option(std::move(name), Option::Target(&target), std::move(help));
  }
  Option* add_flag(std::string name, bool& target, std::string help) {
    return add_option(std::move(name), Option::Target(&target), std::move(help));
  }
  void footer(std::string text) { footer_text = std::move(text); }
  void callback(std::function<void()> function) { run = std::move(function); }
};

struct Program {
  std::string description, name, footer_text;
  std::deque<Command> commands;

  Command* add_subcommand(std::string name, std::string description) {
    return &commands.emplace_back(
        Command{std::move(name), std::move(description), {}, {}, {}, false});
  }
};

// Runs the command of the arguments, or prints help or the version. `help` and `help COMMAND` are
// other words for --help. A Failure says what is wrong with the arguments.
void run_command(const Program& program, const std::vector<std::string>& arguments,
                 const std::function<std::string()>& version);

#endif
