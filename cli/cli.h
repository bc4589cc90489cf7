// SPDX-License-Identifier: MIT
//
// What the subcommands share: how they fail, colour their output and join the program.
#ifndef LUX_CLI_CLI_H
#define LUX_CLI_CLI_H

#include <CLI/App.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Config.hpp>
#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>

using Json = nlohmann::ordered_json;

// Ends the program with its message and exit code 1.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class Colour { good, warning, bad, quiet, strong };

// Text in colour when stdout (or stderr) is a terminal that wants it.
std::string paint(Colour colour, const std::string& text);
std::string paint_stderr(Colour colour, const std::string& text);

// A message on stderr; that it cannot be written is no reason to fail.
void say(const std::string& text);

void print_json(const Json& document);

void add_list(CLI::App& program);
void add_eval(CLI::App& program);
void add_apply(CLI::App& program);
void add_env(CLI::App& program);
void add_explain(CLI::App& program);
void add_accuracy(CLI::App& program);
void add_diff(CLI::App& program);
void add_check(CLI::App& program);
void add_bench(CLI::App& program);

#endif
