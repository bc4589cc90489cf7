// SPDX-License-Identifier: MIT
//
// The file of the largest errors ever found. Each was measured by this program; it stands until a
// larger one is found or the function's published results change.
#ifndef LUX_CLI_FIGURES_H
#define LUX_CLI_FIGURES_H

#include "cli/cli.h"

#include <string>

// A Failure if that file is there and is none of these, or cannot be written.
void require_recordable(const std::string& path);

// Adds the reports of a run. Of a run over part of the arguments only the errors count, not how
// many results there were.
void record_figures(const std::string& path, const Json& reports, bool whole_line);

#endif
