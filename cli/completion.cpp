// SPDX-License-Identifier: MIT
//
// luxvm completion: scripts that complete the program's own command line in bash and zsh, made from
// what its commands say of themselves.
#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/command_line.h"

#include <fmt/format.h>

#include <algorithm>

// What may stand in the place of an option's value, or of a word that is no option.
enum class Values { none, words, files, functions, commands };

static bool is_named(const Option& option) { return option.name[0] == '-'; }
static bool is_flag(const Option& option) { return std::holds_alternative<bool*>(option.target); }

static Values values_of(const Option& option) {
  if (is_flag(option)) return Values::none;
  if (!option.members.empty()) return Values::words;
  if (option.name == "pattern" || option.name == "name") return Values::functions;
  if (option.name == "command") return Values::commands;
  if (option.name == "values") return Values::none;
  const bool is_text = std::holds_alternative<std::string*>(option.target) ||
                       std::holds_alternative<std::vector<std::string>*>(option.target);
  return is_text ? Values::files : Values::none;
}

static std::string joined(const std::vector<std::string>& words) {
  return fmt::format("{}", fmt::join(words, " "));
}

static std::string function_names() {
  std::vector<std::string> names;
  for (const Function* function : find_functions({})) names.emplace_back(function->name);
  return joined(names);
}

static std::string command_names(const Program& program) {
  std::vector<std::string> names;
  for (const Command& command : program.commands)
    if (!command.is_hidden) names.push_back(command.name);
  return joined(names);
}

static std::string bash_action(const Option& option) {
  switch (values_of(option)) {
    case Values::words:
      return fmt::format("words='{}'", joined(option.members));
    case Values::files:
      return "words=files";
    case Values::functions:
      return "words=$functions";
    case Values::commands:
      return "words=$commands";
    case Values::none:
      break;
  }
  return "words=";
}

static std::string bash_case(const Command& command) {
  std::string values, positional = "words=", named = "--help";
  for (const Option& option : command.options) {
    if (!is_named(option)) {
      if (values_of(option) != Values::none) positional = bash_action(option);
      continue;
    }
    named += " " + option.name;
    if (!is_flag(option))
      values += fmt::format("        {}) {} ;;\n", option.name, bash_action(option));
  }
  return fmt::format(
      "    {})\n"
      "      case $previous in\n"
      "{}"
      "        *) {}; [[ $current == -* ]] && words='{}' ;;\n"
      "      esac ;;\n",
      command.name, values, positional, named);
}

static std::string bash_script(const Program& program) {
  std::string cases;
  for (const Command& command : program.commands)
    if (!command.is_hidden) cases += bash_case(command);
  return fmt::format(
      R"(# Completion of luxvm for bash, printed by `luxvm completion bash`.
_luxvm() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}} words=
  local commands='{}' functions='{}'
  # --option=value comes in three words.
  [[ $current == = ]] && current=
  [[ $previous == = ]] && previous=${{COMP_WORDS[COMP_CWORD-2]}}
  case $COMP_CWORD:${{COMP_WORDS[1]}} in
    1:*) words="$commands --help --version" ;;
  esac
  [[ $COMP_CWORD -gt 1 ]] && case ${{COMP_WORDS[1]}} in
{}  esac
  if [[ $words == files ]]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  fi
}}
complete -F _luxvm luxvm
)",
      command_names(program), function_names(), cases);
}

static std::string replaced(std::string text, const std::string& letters) {
  std::string result;
  for (const char letter : text) {
    if (letter == '\'') {
      result += "'\\''";
      continue;
    }
    if (letters.find(letter) != std::string::npos) result += '\\';
    result += letter;
  }
  return result;
}

static std::string zsh_action(const Option& option) {
  switch (values_of(option)) {
    case Values::words:
      return fmt::format(":({})", joined(option.members));
    case Values::files:
      return ":_files";
    case Values::functions:
      return ":_luxvm_functions";
    case Values::commands:
      return ":_luxvm_commands";
    case Values::none:
      break;
  }
  return ": ";
}

static std::string zsh_case(const Command& command) {
  std::string specs;
  int place = 0;
  for (const Option& option : command.options) {
    const std::string help = replaced(option.help, "[]");
    if (is_named(option))
      specs += fmt::format(" \\\n        '{}[{}]{}'", option.name, help,
                           is_flag(option) ? "" : ":" + option.name.substr(2) + zsh_action(option));
    else
      specs += fmt::format(" \\\n        '{}:{}{}'",
                           std::holds_alternative<std::vector<std::string>*>(option.target)
                               ? "*"
                               : std::to_string(++place),
                           option.name, zsh_action(option));
  }
  return fmt::format("    {})\n      _arguments '--help[Tell about the command]'{} ;;\n",
                     command.name, specs);
}

static std::string zsh_script(const Program& program) {
  std::string cases, described;
  for (const Command& command : program.commands) {
    if (command.is_hidden) continue;
    cases += zsh_case(command);
    described += fmt::format("    '{}:{}'\n", command.name, replaced(command.description, ":"));
  }
  return fmt::format(R"(#compdef luxvm
# Completion of luxvm for zsh, printed by `luxvm completion zsh`.
_luxvm_functions() {{
  compadd -- {}
}}
_luxvm_commands() {{
  local -a commands=(
{}  )
  _describe command commands
}}
_luxvm() {{
  if (( CURRENT == 2 )); then
    _luxvm_commands
    [[ $words[2] == -* ]] && compadd -- --help --version
    return
  fi
  local command=$words[2]
  shift words
  (( CURRENT-- ))
  case $command in
{}  esac
}}
_luxvm "$@"
)",
                     function_names(), described, cases);
}

void add_completion(Program& program) {
  auto shell = std::make_shared<std::string>();
  Command* command = program.add_subcommand(
      "completion", "Print a script that completes this program's command line in a shell");
  command->is_hidden = true;
  command->add_option("shell", *shell, "bash or zsh")->required()->check_is_member({"bash", "zsh"});
  command->footer(
      "Installations bring both scripts. Examples:\n"
      "  source <(luxvm completion bash)\n"
      "  luxvm completion zsh > ~/.zfunc/_luxvm");
  command->callback([&program, shell] {
    fmt::print("{}", *shell == "zsh" ? zsh_script(program) : bash_script(program));
  });
}
