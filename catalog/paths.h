// SPDX-License-Identifier: MIT
//
// Which of its two ways the loaded library takes: its own kernels alone, or with the steps of the wide
// library beside it.
#ifndef LUX_CATALOG_PATHS_H
#define LUX_CATALOG_PATHS_H

#include "catalog/catalog.h"

#include <string>
#include <vector>

namespace bench {

enum class Path { narrow, wide };

struct WidePath {
  bool taken = false;        // by the main library, when it was loaded
  int32_t least_length = 0;  // of calls that take it
  std::string file;          // where the wide library is, or would be
  std::string why;           // it is not taken
};

const WidePath& wide_path();

// Whether the wide library has a step for it.
bool has_wide_step(const Function& function);

// One function for each step, the best of those that share it.
std::vector<const Function*> functions_with_own_step();

// For the calls from now on, in this process. The wide path must have been taken at the start.
void take_path(Path path);

// The same, from this length on; only where the wide path is taken.
void set_least_wide_length(int32_t length);

}  // namespace bench

#endif
