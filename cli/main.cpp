// SPDX-License-Identifier: MIT
//
// luxvm: the library from the command line.
#include "cli/cli.h"
#include "cli/command_line.h"
#include "luxvmk3.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
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
  constexpr const char* kCodes[] = {"32", "33", "31", "2", "1"};
  return fmt::format("\x1b[{}m{}\x1b[0m", kCodes[int(colour)], text);
}

std::string paint(Colour colour, const std::string& text) {
  return painted(STDOUT_FILENO, colour, text);
}

std::string paint_stderr(Colour colour, const std::string& text) {
  return painted(STDERR_FILENO, colour, text);
}

void say(const std::string& text) { fputs(text.c_str(), stderr); }

std::string today() {
  const time_t now = time(nullptr);
  char text[16];
  strftime(text, sizeof text, "%Y-%m-%d", localtime(&now));
  return text;
}

void print_json(const Json& document) {
  // Names on the command line may hold any bytes; invalid UTF-8 must not end in an exception.
  fmt::print("{}\n", document.dump(2));
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

static int complain(const std::string& message, ExitCode code) {
  say(fmt::format("{} {}\n", paint_stderr(Colour::bad, "luxvm:"), message));
  return code;
}

static std::string version_text() {
  const LuxLibraryVersion* v = luxvmGetLibVersion();
  return fmt::format("luxvm " LUX_VERSION "\n{} version {}, build {}.{}.{}.{}, built {}", v->name,
                     v->version, v->major, v->minor, v->major_build, v->build, v->build_date);
}

static void run(const std::vector<std::string>& arguments) {
  Program program{
      "Element-wise math functions over arrays, from the command line.",
      "luxvm",
      "Examples:\n"
      "  luxvm list Exp\n"
      "  luxvm eval luxsExp_64f_A53 1 -745 inf\n"
      "  luxvm apply luxsInv_32f_A24 --in numbers.txt --out inverses.txt\n"
      "  luxvm explain luxsExp_32f_A24 --n 1e6 --threads 2\n"
      "  luxvm check\n"
      "  luxvm bench Exp --compare\n"
      "  luxvm plot Erfc_64f --error -o erfc.svg\n"
      "`luxvm help COMMAND` tells more about each command.\n"
      "Exit codes: 0 all is well; 1 a check failed, or `diff` found something worse; 2 nothing "
      "was\n"
      "found out, because of the command line, a file or the machine.",
      {}};
  add_list(program);
  add_eval(program);
  add_apply(program);
  add_env(program);
  add_explain(program);
  add_accuracy(program);
  add_diff(program);
  add_check(program);
  add_bench(program);
  add_plot(program);
  add_formats(program);
  std::string command;
  program.add_subcommand("help", "Tell about the program or a command")
      ->add_option("command", command, "The command");
  add_completion(program);
  run_command(program, arguments, version_text);
}

static int guarded_run(const std::vector<std::string>& arguments) {
  try {
    run(arguments);
    return kFine;
  } catch (const Failure& failure) {
    return complain(failure.what(), kBadInput);
  } catch (const CheckFailed& failed) {
    return *failed.what() ? complain(failed.what(), kFailedCheck) : kFailedCheck;
  } catch (const Interrupted& interrupted) {
    complain(interrupted.what(), kBadInput);
    fflush(stdout);
    signal(interrupted.signal, SIG_DFL);
    raise(interrupted.signal);
    return kBadInput;
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  } catch (const std::exception& error) {
    return complain(error.what(), kBadInput);
  }
  return complain(
      "not enough memory: a 32-bit program holds at most 4 GB, input and results together; "
      "split the input",
      kBadInput);
}

int main(int count, char** arguments) {
  reserve_standard_streams();
  std::vector<std::string> list;
  for (int i = 1; i < count; ++i) list.push_back(protect_negative(arguments[i]));
  const int result = guarded_run(list);
  // A long output has failed, and been complained of, before this.
  if ((fflush(stdout) != 0 || ferror(stdout)) && result == 0)
    return complain(fmt::format("cannot write to the standard output: {}", strerror(errno)),
                    kBadInput);
  return result;
}
