// SPDX-License-Identifier: MIT
#include "cli/progress.h"

#include "cli/cli.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string>

using namespace std::chrono_literals;

Progress::Progress(std::string label, uint64_t total, Unit unit)
    : label(std::move(label)),
      total(total),
      unit(unit),
      terminal(isatty(STDERR_FILENO)),
      start(std::chrono::steady_clock::now()),
      next(start + 500ms) {}

Progress::~Progress() {
  if (drawn) say("\r\033[K");
}

void Progress::reach(uint64_t amount) {
  done = amount;
  if (!terminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (!started) {
    started = true;
    if (unit == kShare) before = done, start = now;
  }
  if (now < next) return;
  next = now + 100ms;
  drawn = true;
  draw();
}

std::string Progress::amount() const {
  if (unit == kBytes) return fmt::format("{:.1f} MB", double(done) / 1e6);
  const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
  if (done <= before || spent < 1s) return "";
  const auto left = int64_t(spent.count() * double(total - done) / double(done - before));
  return fmt::format("{}:{:02}:{:02} left", left / 3600, left / 60 % 60, left % 60);
}

void Progress::draw() const {
  constexpr uint64_t kWidth = 40;
  if (total == 0) {
    say(fmt::format("\r{:<8} {}\033[K", label, amount()));
  } else {
    const uint64_t share = std::min(done, total);
    const size_t filled = size_t(share * kWidth / total);
    say(fmt::format("\r{:<8} [{}{}] {:3}% {}\033[K", label, std::string(filled, '#'),
                    std::string(kWidth - filled, ' '), share * 100 / total, amount()));
  }
  fflush(stderr);
}
