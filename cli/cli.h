// SPDX-License-Identifier: MIT
//
// What the subcommands share: how they fail, colour their output and join the program.
#ifndef LUX_CLI_CLI_H
#define LUX_CLI_CLI_H

#include "catalog/failure.h"  // ends the program with its message and kBadInput
#include "catalog/json.h"

#include <stdexcept>
#include <string>

// How the program ends; every command keeps to this.
enum ExitCode {
  kFine = 0,
  kFailedCheck = 1,  // a promise that is not kept, or something that became worse
  kBadInput = 2      // nothing was found out: a wrong command line, a file that cannot be used
};

// Ends the program with kFailedCheck and its message, if it has one.
struct CheckFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Ends the program with its message, by the signal that it was sent.
struct Interrupted : std::runtime_error {
  Interrupted(const std::string& message, int signal)
      : std::runtime_error(message), signal(signal) {}
  int signal;
};

struct Program;

enum class Colour { good, warning, bad, quiet, strong };

// Text in colour when stdout (or stderr) is a terminal that wants it.
std::string paint(Colour colour, const std::string& text);
std::string paint_stderr(Colour colour, const std::string& text);

// A message on stderr; that it cannot be written is no reason to fail.
void say(const std::string& text);

std::string today();  // 2026-12-31

void print_json(const Json& document);

void add_list(Program& program);
void add_eval(Program& program);
void add_apply(Program& program);
void add_env(Program& program);
void add_explain(Program& program);
void add_accuracy(Program& program);
void add_diff(Program& program);
void add_check(Program& program);
void add_bench(Program& program);
void add_completion(Program& program);
void add_plot(Program& program);
void add_formats(Program& program);

#endif
