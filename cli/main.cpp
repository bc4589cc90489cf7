// SPDX-License-Identifier: MIT
//
// luxvm: the library from the command line.
#include "cli/cli.h"

#include <fcntl.h>
#include <fmt/color.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

static bool wants_colour(int descriptor) {
  const char* no_colour = getenv("NO_COLOR");
  const char* terminal = getenv("TERM");
  return isatty(descriptor) && !(no_colour && *no_colour) &&
         !(terminal && strcmp(terminal, "dumb") == 0);
}

static std::string painted(int descriptor, Colour colour, const std::string& text) {
  if (!wants_colour(descriptor)) return text;
  switch (colour) {
    case Colour::good:
      return fmt::format(fmt::fg(fmt::terminal_color::green), "{}", text);
    case Colour::warning:
      return fmt::format(fmt::fg(fmt::terminal_color::yellow), "{}", text);
    case Colour::bad:
      return fmt::format(fmt::fg(fmt::terminal_color::red), "{}", text);
    case Colour::quiet:
      return fmt::format(fmt::emphasis::faint, "{}", text);
    default:
      return fmt::format(fmt::emphasis::bold, "{}", text);
  }
}

std::string paint(Colour colour, const std::string& text) {
  return painted(STDOUT_FILENO, colour, text);
}

std::string paint_stderr(Colour colour, const std::string& text) {
  return painted(STDERR_FILENO, colour, text);
}

void say(const std::string& text) { fputs(text.c_str(), stderr); }

void print_json(const Json& document) {
  // Names on the command line may hold any bytes; invalid UTF-8 must not end in an exception.
  fmt::print("{}\n", document.dump(2, ' ', false, Json::error_handler_t::replace));
}

// A file opened while a standard stream is closed would take its number and receive its output.
// What is opened here refuses to be read or to take results; messages go nowhere.
static void reserve_standard_streams() {
  for (int descriptor = 0; descriptor < 3; ++descriptor)
    if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF)
      open("/dev/null", descriptor == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
}

// Negative numbers look like options; behind a space they are taken as values.
static std::string protect_negative(const std::string& argument) {
  if (argument.size() < 2 || argument[0] != '-') return argument;
  const char next = argument[1];
  const bool named = argument == "-inf" || argument == "-infinity" || argument == "-nan" ||
                     argument.rfind("-inf,", 0) == 0 || argument.rfind("-nan,", 0) == 0;
  return isdigit(static_cast<unsigned char>(next)) || next == '.' || named ? " " + argument
                                                                           : argument;
}

static int complain(const std::string& message) {
  say(fmt::format("{} {}\n", paint_stderr(Colour::bad, "luxvm:"), message));
  return 1;
}

static int run(const std::vector<std::string>& arguments) {
  CLI::App program{"Element-wise math functions over arrays, from the command line.", "luxvm"};
  program.require_subcommand(1);
  program.footer(
      "Examples:\n"
      "  luxvm list Exp\n"
      "  luxvm eval luxsExp_64f_A53 1 -745 inf\n"
      "  luxvm apply luxsInv_32f_A24 --in numbers.txt --out inverses.txt\n"
      "  luxvm explain luxsExp_32f_A24 --n 1000000 --threads 2\n"
      "  luxvm check\n"
      "  luxvm bench Exp --compare\n"
      "`luxvm COMMAND --help` tells more about each command.");
  add_list(program);
  add_eval(program);
  add_apply(program);
  add_env(program);
  add_explain(program);
  add_accuracy(program);
  add_diff(program);
  add_check(program);
  add_bench(program);

  // The parser takes the arguments in reverse.
  std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
  try {
    program.parse(reversed);
  } catch (const CLI::ParseError& error) {
    return program.exit(error);
  }
  return 0;
}

static int guarded_run(const std::vector<std::string>& arguments) {
  try {
    return run(arguments);
  } catch (const Failure& failure) {
    return complain(failure.what());
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  } catch (const std::exception& error) {
    return complain(error.what());
  }
  return complain(
      "not enough memory: a 32-bit program holds at most 4 GB, input and results together; "
      "split the input");
}

int main(int count, char** arguments) {
  reserve_standard_streams();
  std::vector<std::string> list;
  for (int i = 1; i < count; ++i) list.push_back(protect_negative(arguments[i]));
  const int result = guarded_run(list);
  // A long output has failed, and been complained of, before this.
  if ((fflush(stdout) != 0 || ferror(stdout)) && result == 0)
    return complain(fmt::format("cannot write to the standard output: {}", strerror(errno)));
  return result;
}
