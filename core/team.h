// SPDX-License-Identifier: MIT
//
// Which threads compute the slices of one call: the runtime's where they can be had and pay, the
// calling thread alone everywhere else.
#ifndef LUX_CORE_TEAM_H
#define LUX_CORE_TEAM_H

#include <stdint.h>

// Nanoseconds of a clock that never goes back. Tests replace it.
extern "C" int64_t (*nox_clock)();

class Team {
 public:
  // For that many slices. Looks at the thread count of the core library anew: it may be lower than
  // the number of slices, whose cut it does not change.
  explicit Team(int32_t slices);

  int32_t size() const { return size_; }

  // Any thread of the team, behind each slice that it computed.
  void count(int64_t nanoseconds);

  // The calling thread, behind the region. Where the threads took longer than the slices one after
  // another would have, calls stay on their own thread for a while.
  void judge() const;

 private:
  int32_t slices_, size_;
  bool starts_threads_ = false;  // which takes long and says nothing of later calls
  int64_t started_ = 0;
  uint32_t fastest_ = UINT32_MAX;  // nanoseconds of a slice
};

#endif
