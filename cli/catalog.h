// SPDX-License-Identifier: MIT
//
// Functions by name and by pattern, and what their numbers mean.
#ifndef LUX_CLI_CATALOG_H
#define LUX_CLI_CATALOG_H

#include "core/catalog.h"

#include <string>
#include <string_view>

// The function of that name; otherwise a Failure that names the nearest one.
const Function& find_function(const std::string& name);

// A glob over the whole name, or without * ? [ a part of it; letter case does not matter.
bool name_matches(const Function& function, const std::string& pattern);

constexpr int32_t kNever = 0x7FFFFFFF;

// The library's threshold for threading, kNever for the functions without a cost row.
int32_t min_n(const Function& function, int32_t threads);

// The meaning of a report code, and of what a function returned.
std::string code_meaning(int32_t code);
std::string status_meaning(const Function& function, Status status);

#endif
