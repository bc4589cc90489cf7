// SPDX-License-Identifier: MIT
//
// Functions by name and by pattern, and what their numbers mean.
#ifndef LUX_CATALOG_LOOKUP_H
#define LUX_CATALOG_LOOKUP_H

#include "catalog/catalog.h"

#include <string>
#include <string_view>
#include <vector>

// The function of that name; null when there is none.
const Function* function_named(std::string_view name);

// The function of that name; otherwise a Failure that names the nearest one.
const Function& find_function(const std::string& name);

// The functions that any of the patterns stands for, all of them without a pattern, in the order of
// the list; a Failure when there are none, or none for a pattern that is no glob.
std::vector<const Function*> find_functions(const std::vector<std::string>& patterns);
extern const char* const kPatternHelp;

// How many letters must change to make one word of the other.
size_t edit_distance(const std::string& a, const std::string& b);

constexpr int32_t kNever = 0x7FFFFFFF;

// The library's threshold for threading, kNever for the functions without a cost row.
int32_t min_n(const Function& function, int32_t threads);

// The meaning of a report code, and of what a function returned.
std::string code_meaning(int32_t code);
std::string status_meaning(const Function& function, Status status);

#endif
