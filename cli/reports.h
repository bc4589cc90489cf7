// SPDX-License-Identifier: MIT
//
// The program's own noxsError and noxdError: they take every report of the library and raise no
// exception flag.
#ifndef LUX_CLI_REPORTS_H
#define LUX_CLI_REPORTS_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct Report {
  int32_t code, index;  // the index counts from the start of the slice
  std::string name;
};

struct Reports {
  std::map<int32_t, uint64_t> by_code;
  std::vector<Report> kept;  // the first ones
};

// Forget what was reported, and keep up to `most` reports one by one from now on.
void start_reports(size_t most);
Reports take_reports();

// From now on only their sum is taken, quickly and by one thread: a number that reports of other codes, or of
// the same elements in another order, change.
void sum_reports();
uint64_t take_sum_of_reports();

// From now on reports go where they go in a program that does not take them, at the cost of a jump:
// measurements are to show what the library's own handling costs.
void leave_reports_to_the_library();

#endif
