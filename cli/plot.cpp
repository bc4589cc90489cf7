// SPDX-License-Identifier: MIT
#include "cli/plot.h"

#include "cli/cli.h"
#include "cli/files.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>

// Without a name, so that nothing of it is left whatever happens.
class Scratch {
 public:
  explicit Scratch(const std::string& content = "") : file_(tmpfile(), fclose) {
    if (!file_ || fwrite(content.data(), 1, content.size(), file_.get()) != content.size() ||
        fflush(file_.get()) != 0)
      throw Failure(fmt::format("cannot write a temporary file: {}", strerror(errno)));
    rewind(file_.get());
  }

  int descriptor() const { return fileno(file_.get()); }

  std::string content() {
    std::string text;
    char part[1 << 16];
    rewind(file_.get());
    while (const size_t got = fread(part, 1, sizeof part, file_.get())) text.append(part, got);
    return text;
  }

 private:
  std::unique_ptr<FILE, int (*)(FILE*)> file_;
};

// 0 or an errno; `status` is what the process left.
static int run_gnuplot(const Scratch& in, const Scratch& out, const Scratch& messages,
                       int& status) {
  posix_spawn_file_actions_t streams;
  posix_spawn_file_actions_init(&streams);
  posix_spawn_file_actions_adddup2(&streams, in.descriptor(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&streams, out.descriptor(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&streams, messages.descriptor(), STDERR_FILENO);
  char name[] = "gnuplot", no_start_up_files[] = "-d";
  char* const arguments[] = {name, no_start_up_files, nullptr};
  pid_t process;
  const int error = posix_spawnp(&process, name, &streams, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&streams);
  if (error) return error;
  while (waitpid(process, &status, 0) < 0)
    if (errno != EINTR) return errno;
  return 0;
}

// gnuplot shows the line, a mark below it and then the reason, the last thing it says.
static std::string reason_in(std::string messages) {
  messages.erase(messages.find_last_not_of(" \n\t") + 1);
  const size_t last_line = messages.find_last_of('\n') + 1;
  const size_t start = messages.find_first_not_of(' ', last_line);
  return start == std::string::npos ? "it was told to plot nothing" : messages.substr(start);
}

static Failure no_gnuplot() {
  return Failure(
      "plots are drawn by gnuplot, which is not installed (Debian: apt-get install gnuplot-nox)");
}

// As posix_spawnp looks for it.
static bool has_gnuplot() {
  const char* const path = getenv("PATH");
  std::istringstream folders(path ? path : "/bin:/usr/bin");
  for (std::string folder; std::getline(folders, folder, ':');)
    if (access(((folder.empty() ? "." : folder) + "/gnuplot").c_str(), X_OK) == 0) return true;
  return false;
}

void require_drawable(const std::string& path) {
  if (is_standard_stream(path)) throw Failure("--plot needs the name of a file");
  require_writable(path);
  if (!has_gnuplot()) throw no_gnuplot();
}

void draw_svg(const std::string& path, int width, int height, const std::string& commands) {
  const Scratch in(
      fmt::format("set encoding utf8\n"
                  "set terminal svg size {},{} enhanced font 'sans-serif,13' background 'white'\n"
                  "{}\n",
                  width, height, commands));
  Scratch out, messages;
  int status = 0;
  if (const int error = run_gnuplot(in, out, messages, status))
    throw error == ENOENT ? no_gnuplot()
                          : Failure(fmt::format("cannot run gnuplot: {}", strerror(error)));
  const std::string picture = out.content();
  const bool complete = picture.find("</svg>") != std::string::npos;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || !complete)
    throw Failure(
        fmt::format("gnuplot could not draw {}: {}", path, reason_in(messages.content())));
  write_file(path, picture);
}
