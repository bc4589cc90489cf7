// SPDX-License-Identifier: MIT
#include "cli/catalog.h"
#include "cli/cli.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <numeric>
#include <tuple>

static std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return result;
}

static size_t edit_distance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t(0));
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t changed = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

// Without the prefix that all names share: "sin" is no part of luxsInv.
static std::string bare(const Function& function) { return lower(function.name).substr(4); }

// A part of a name stands for the whole, so "Exp_64f" is as near to luxsExp_64f_A53 as can be.
static size_t distance(const Function& function, const std::string& wanted) {
  const std::string name = lower(function.name);
  if (bare(function).find(wanted) != std::string::npos || name.find(wanted) == 0) return 0;
  return edit_distance(name, wanted);
}

// Near names first, then the better grade.
static bool nearer(const Function& a, const Function& b, const std::string& wanted) {
  const auto rank = [&](const Function& f) {
    return std::make_pair(distance(f, wanted), f.variant);
  };
  return rank(a) < rank(b);
}

const Function& find_function(const std::string& name) {
  for (const Function& function : kFunctions)
    if (function.name == name) return function;

  const std::string wanted = lower(std::string_view(name).substr(0, 64));
  const Function& nearest =
      *std::min_element(std::begin(kFunctions), std::end(kFunctions),
                        [&](const Function& a, const Function& b) { return nearer(a, b, wanted); });
  const bool close = !wanted.empty() && distance(nearest, wanted) <= 2 + wanted.size() / 3;
  throw Failure(fmt::format("there is no function '{}'; {}`luxvm list` shows them all",
                            std::string_view(name).substr(0, 64),
                            close ? fmt::format("did you mean {}? ", nearest.name) : ""));
}

bool name_matches(const Function& function, const std::string& pattern) {
  if (pattern.find_first_of("*?[") == std::string::npos)
    return bare(function).find(lower(pattern)) != std::string::npos ||
           lower(function.name).find(lower(pattern)) == 0;
  return fnmatch(pattern.c_str(), function.name.data(), FNM_CASEFOLD) == 0;
}

int32_t min_n(const Function& function, int32_t threads) {
  if (function.row < 0) return kNever;
  switch (function.type.letter) {
    case 's':
      return noxsMinN(function.row, function.variant, threads);
    case 'd':
      return noxdMinN(function.row, function.variant, threads);
    case 'c':
      return noxcMinN(function.row, function.variant, threads);
    default:
      return noxzMinN(function.row, function.variant, threads);
  }
}

std::string code_meaning(int32_t code) {
  switch (code) {
    case LUX_OVERFLOW:
      return "overflow";
    case LUX_UNDERFLOW:
      return "underflow";
    case LUX_POLE:
      return "pole";
    case LUX_DOMAIN:
      return "outside the domain";
    default:
      return "a code of this function's own";
  }
}

std::string status_meaning(const Function& function, Status status) {
  if (function.counts) return "elements computed";
  switch (status) {
    case LUX_OK:
      return "success";
    case LUX_BAD_LENGTH:
      return "length below 1";
    case LUX_NULL_POINTER:
      return "null pointer";
    default:
      return status > 0 ? "warning: " + code_meaning(status) : "unknown";
  }
}
