// SPDX-License-Identifier: MIT
#include "catalog/failure.h"

#include <fmt/format.h>

std::string in_quotes(std::string_view text) {
  constexpr size_t kLongest = 40;
  std::string shown;
  for (unsigned char c : text.substr(0, kLongest)) shown += c < 0x20 || c == 0x7F ? '?' : char(c);
  return fmt::format("'{}{}'", shown, text.size() > kLongest ? "..." : "");
}
