// SPDX-License-Identifier: MIT
//
// What a program around the library cannot go on with: a message for whoever called it.
#ifndef LUX_CATALOG_FAILURE_H
#define LUX_CATALOG_FAILURE_H

#include <stdexcept>
#include <string>
#include <string_view>

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Text of unknown origin, made fit to stand in a message.
std::string in_quotes(std::string_view text);

#endif
