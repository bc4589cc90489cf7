// SPDX-License-Identifier: MIT
//
// luxvm: the library from the command line.
#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/numbers.h"
#include "luxvmk3.h"

#include <fcntl.h>
#include <fmt/color.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
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

static int complain(const std::string& message, ExitCode code) {
  say(fmt::format("{} {}\n", paint_stderr(Colour::bad, "luxvm:"), message));
  return code;
}

static std::string version_text() {
  const LuxLibraryVersion* v = luxvmGetLibVersion();
  return fmt::format("luxvm " LUX_VERSION "\n{} version {}, build {}.{}.{}.{}, built {}", v->name,
                     v->version, v->major, v->minor, v->major_build, v->build, v->build_date);
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

static int run(const std::vector<std::string>& arguments) {
  CLI::App program{"Element-wise math functions over arrays, from the command line.", "luxvm"};
  program.require_subcommand(1);
  program.set_version_flag("--version", version_text);
  program.footer(
      "Examples:\n"
      "  luxvm list Exp\n"
      "  luxvm eval luxsExp_64f_A53 1 -745 inf\n"
      "  luxvm apply luxsInv_32f_A24 --in numbers.txt --out inverses.txt\n"
      "  luxvm explain luxsExp_32f_A24 --n 1e6 --threads 2\n"
      "  luxvm check\n"
      "  luxvm bench Exp --compare\n"
      "`luxvm help COMMAND` tells more about each command.\n"
      "Exit codes: 0 all is well; 1 a check failed, or `diff` found something worse; 2 nothing "
      "was\n"
      "found out, because of the command line, a file or the machine.");
  add_list(program);
  add_eval(program);
  add_apply(program);
  add_env(program);
  add_explain(program);
  add_accuracy(program);
  add_diff(program);
  add_check(program);
  add_bench(program);
  CLI::App* const help = program.add_subcommand("help", "Tell about the program or a command");
  auto command = std::make_shared<std::string>();
  help->add_option("command", *command, "The command");

  std::vector<std::string> reversed = resolve_help(program, arguments);
  std::reverse(reversed.begin(), reversed.end());  // as the parser takes them
  try {
    program.parse(reversed);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return program.exit(error);  // --help and --version
    const auto commands = program.get_subcommands();
    return complain(
        fmt::format("{}; `luxvm help{}{}` tells more", error.what(), commands.empty() ? "" : " ",
                    commands.empty() ? "" : commands[0]->get_name()),
        kBadInput);
  }
  return kFine;
}

static int guarded_run(const std::vector<std::string>& arguments) {
  try {
    return run(arguments);
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
