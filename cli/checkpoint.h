// SPDX-License-Identifier: MIT
//
// What a long run has done so far, kept so that the same command goes on after an interruption. It
// belongs to one command line and one build of the library and goes away when the run is complete.
// Where nothing can be kept, that is said once and the run goes on without.
#ifndef LUX_CLI_CHECKPOINT_H
#define LUX_CLI_CHECKPOINT_H

#include "cli/cli.h"

#include <atomic>

class Checkpoint {
 public:
  // `run` names what is done with which options; `fresh` forgets an earlier attempt. A Failure when
  // what was kept is not what was written.
  Checkpoint(const std::string& run, bool fresh);
  Json content;  // an object, empty at first
  bool resumed() const { return resumed_; }
  void save();
  void remove() const;
  const std::string& path() const { return path_; }  // empty: nothing is kept
  [[noreturn]] void refuse(const std::string& why) const;

  // Forgets all runs: how many there were, and the folder, empty if the environment names none.
  static int clear(std::string& folder);

 private:
  void keep_nothing(const std::string& why);

  std::string path_;
  bool resumed_ = false;
};

// Set by an interrupt from the keyboard or a request to end, while it exists. The second interrupt
// ends the program as usual.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  static std::atomic<bool> requested;
  static std::atomic<int> signal_number;  // by which
};

// The library that this process has loaded: its file and a hash of it.
std::string library_path();
std::string library_digest();

#endif
