// SPDX-License-Identifier: MIT
//
// A progress bar on stderr, for work that takes longer than half a second on a terminal.
#ifndef LUX_CLI_PROGRESS_H
#define LUX_CLI_PROGRESS_H

#include <chrono>
#include <cstdint>

class Progress {
 public:
  // A total of 0 means unknown: only the bytes are shown.
  Progress(const char* label, uint64_t total_bytes);
  ~Progress();
  Progress(const Progress&) = delete;
  void advance(uint64_t bytes);

 private:
  void draw() const;

  const char* label;
  uint64_t total, done = 0;
  bool terminal, drawn = false;
  std::chrono::steady_clock::time_point next;
};

#endif
