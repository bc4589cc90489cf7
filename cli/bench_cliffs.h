// SPDX-License-Identifier: MIT
//
// What special classes of arguments and short arrays cost.
#ifndef LUX_CLI_BENCH_CLIFFS_H
#define LUX_CLI_BENCH_CLIFFS_H

#include "catalog/lookup.h"
#include "cli/cli.h"

#include <limits>
#include <map>

struct Cliff {
  std::string name;                                               // of the class
  double one_percent = std::numeric_limits<double>::quiet_NaN();  // of the elements are of it
  double all = std::numeric_limits<double>::quiet_NaN();
};

// Core cycles, per element of 2000 where nothing else is said.
struct CliffRow {
  const Function* function = nullptr;
  double ordinary = 0;
  std::vector<Cliff> cliffs;
  std::map<int32_t, double> calls;                                // by length: of the whole call
  double loop_of_one = std::numeric_limits<double>::quiet_NaN();  // the plain loop, one element
};

CliffRow measure_cliffs(const Function& function, int32_t milliseconds);
void keep_lower(CliffRow& row, const CliffRow& again);

Json cliff_json(const CliffRow& row);
std::string cliffs_csv(const std::vector<CliffRow>& rows);
void print_cliffs(const std::vector<CliffRow>& rows);

#endif
