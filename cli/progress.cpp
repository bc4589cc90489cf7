// SPDX-License-Identifier: MIT
#include "cli/progress.h"

#include "cli/cli.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string>

using namespace std::chrono_literals;

Progress::Progress(const char* label, uint64_t total_bytes)
    : label(label),
      total(total_bytes),
      terminal(isatty(STDERR_FILENO)),
      next(std::chrono::steady_clock::now() + 500ms) {}

Progress::~Progress() {
  if (drawn) say("\r\033[K");
}

void Progress::advance(uint64_t bytes) {
  done += bytes;
  if (!terminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < next) return;
  next = now + 100ms;
  drawn = true;
  draw();
}

void Progress::draw() const {
  constexpr uint64_t kWidth = 40;
  const double megabytes = double(done) / 1e6;
  if (total == 0) {
    say(fmt::format("\r{:<8} {:.1f} MB\033[K", label, megabytes));
  } else {
    const uint64_t share = std::min(done, total);
    const size_t filled = size_t(share * kWidth / total);
    say(fmt::format("\r{:<8} [{}{}] {:3}% {:.1f} MB\033[K", label, std::string(filled, '#'),
                    std::string(kWidth - filled, ' '), share * 100 / total, megabytes));
  }
  fflush(stderr);
}
