// SPDX-License-Identifier: MIT
//
// What a long run has done so far, kept so that the same command goes on after an interruption. It
// belongs to one command line and one build of the library and goes away when the run is complete.
#ifndef LUX_CLI_CHECKPOINT_H
#define LUX_CLI_CHECKPOINT_H

#include "cli/cli.h"

#include <atomic>

class Checkpoint {
 public:
  // `run` names what is done with which options; `fresh` forgets an earlier attempt.
  Checkpoint(const std::string& run, bool fresh);
  Json content;  // an object, empty at first
  bool resumed() const { return resumed_; }
  void save() const;
  void remove() const;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool resumed_ = false;
};

// Writes the whole file beside its place and renames it.
void write_whole(const std::string& path, const std::string& text);

// Set by an interrupt from the keyboard or a request to end, while it exists. The second interrupt
// ends the program as usual.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  static std::atomic<bool> requested;
};

// The library that this process has loaded: its file and a hash of it.
std::string library_path();
std::string library_digest();

#endif
