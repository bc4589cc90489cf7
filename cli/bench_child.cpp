// SPDX-License-Identifier: MIT
#include "cli/bench_child.h"

#include <fmt/format.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <memory>

void run_in_child(const Function& function, const std::function<void(const SendLine& send)>& work,
                  const std::function<void(const Json& line)>& take) {
  int ends[2];
  if (pipe(ends) != 0) throw Failure(fmt::format("cannot make a pipe: {}", strerror(errno)));
  fflush(stdout);
  const pid_t parent = getpid(), child = fork();
  if (child < 0) throw Failure(fmt::format("cannot start a process: {}", strerror(errno)));
  if (child == 0) {
    close(ends[0]);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(1);
    FILE* const to = fdopen(ends[1], "w");
    const auto send = [&](const Json& line) {
      fmt::print(to, "{}\n", line.dump());
      fflush(to);
    };
    try {
      work(send);
    } catch (const std::bad_alloc&) {
      send({{"error", "not enough memory for its arrays"}});
    } catch (const std::exception& error) {
      send({{"error", error.what()}});
    }
    _exit(0);
  }
  close(ends[1]);
  const std::unique_ptr<FILE, int (*)(FILE*)> from(fdopen(ends[0], "r"), fclose);
  std::string error;
  char* line = nullptr;
  size_t size = 0;
  while (getline(&line, &size, from.get()) > 0) {
    Json json;
    try {
      json = Json::parse(line);
    } catch (const Json::exception&) {
      continue;
    }
    if (json.contains("error"))
      error = json["error"];
    else
      take(json);
  }
  free(line);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status))
    throw CheckFailed(fmt::format("{}: {}", function.name, strsignal(WTERMSIG(status))));
  if (!error.empty()) throw Failure(fmt::format("{}: {}", function.name, error));
}
