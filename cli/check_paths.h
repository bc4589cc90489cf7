// SPDX-License-Identifier: MIT
//
// luxvm check --paths: whether the library's two paths give the same.
#ifndef LUX_CLI_CHECK_PATHS_H
#define LUX_CLI_CHECK_PATHS_H

#include <cstdint>
#include <string>
#include <vector>

struct PathsOptions {
  std::vector<std::string> patterns;
  bool exhaustive = false;  // every single, for functions of one
  uint64_t pairs = 1'000'000;
  bool json = false;
};

void check_paths(const PathsOptions& options);

#endif
