// SPDX-License-Identifier: MIT
//
// A progress bar on stderr, for work that takes longer than half a second on a terminal.
#ifndef LUX_CLI_PROGRESS_H
#define LUX_CLI_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

class Progress {
 public:
  enum Unit { kBytes, kShare };
  // A total of 0 means unknown: only the bytes are shown. A share of the work comes with an estimate
  // of the time left.
  Progress(std::string label, uint64_t total, Unit unit = kBytes);
  ~Progress();
  Progress(const Progress&) = delete;
  void advance(uint64_t amount) { reach(done + amount); }
  void reach(uint64_t amount);

 private:
  void draw() const;
  std::string amount() const;

  std::string label;
  uint64_t total, done = 0;
  Unit unit;
  bool terminal, drawn = false;
  std::chrono::steady_clock::time_point start, next;
  bool started = false;  // the first amount reached may come from an earlier run
  uint64_t before = 0;
};

#endif
