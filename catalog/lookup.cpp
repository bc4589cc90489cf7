// SPDX-License-Identifier: MIT
#include "catalog/lookup.h"
#include "catalog/failure.h"

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

size_t edit_distance(const std::string& a, const std::string& b) {
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

const Function* function_named(std::string_view name) {
  for (const Function& function : kFunctions)
    if (function.name == name) return &function;
  return nullptr;
}

const Function& find_function(const std::string& name) {
  if (const Function* const function = function_named(name)) return *function;

  const std::string wanted = lower(std::string_view(name).substr(0, 64));
  const Function& nearest =
      *std::min_element(std::begin(kFunctions), std::end(kFunctions),
                        [&](const Function& a, const Function& b) { return nearer(a, b, wanted); });
  const bool close = !wanted.empty() && distance(nearest, wanted) <= 2 + wanted.size() / 3;
  throw Failure(fmt::format("there is no function '{}'; {}`luxvm list` shows them all",
                            std::string_view(name).substr(0, 64),
                            close ? fmt::format("did you mean {}? ", nearest.name) : ""));
}

const char* const kPatternHelp =
    "A pattern without * ? [ is compared with whole parts of the names: Inv is all of luxsInv_...\n"
    "and not InvSqrt, Exp_64f leaves out Exp_64fc, 32f_A24 and luxsInv_32f are possible too. "
    "Where\n"
    "no name has such parts, it may be any piece of a name. With * ? [ it is a glob over the "
    "whole\n"
    "name, with or without luxs. Letter case does not matter.\n";

static bool is_glob(const std::string& pattern) {
  return pattern.find_first_of("*?[") != std::string::npos;
}

static bool glob_matches(const Function& function, const std::string& pattern) {
  return fnmatch(pattern.c_str(), function.name.data(), FNM_CASEFOLD) == 0 ||
         fnmatch(pattern.c_str(), function.name.data() + 4, FNM_CASEFOLD) == 0;
}

static bool parts_match(const Function& function, const std::string& wanted) {
  const std::string name = lower(function.name) + "_";
  if (wanted.compare(0, 4, "luxs") == 0)
    return name.compare(0, wanted.size() + 1, wanted + "_") == 0;
  return ("_" + name.substr(4)).find("_" + wanted + "_") != std::string::npos;
}

static bool piece_matches(const Function& function, const std::string& wanted) {
  return bare(function).find(wanted) != std::string::npos || lower(function.name).find(wanted) == 0;
}

// Adds what the pattern stands for.
static void mark(const std::string& pattern, std::vector<bool>& marked) {
  const auto mark_if = [&](auto matches, const std::string& wanted) {
    bool any = false;
    for (size_t i = 0; i < std::size(kFunctions); ++i)
      if (matches(kFunctions[i], wanted)) marked[i] = any = true;
    return any;
  };
  if (is_glob(pattern)) {
    mark_if(glob_matches, pattern);
    return;
  }
  const std::string wanted = lower(pattern);
  if (!mark_if(parts_match, wanted) && !mark_if(piece_matches, wanted))
    throw Failure(
        fmt::format("no function matches {}; `luxvm list` shows them all", in_quotes(pattern)));
}

std::vector<const Function*> find_functions(const std::vector<std::string>& patterns) {
  std::vector<bool> marked(std::size(kFunctions), patterns.empty());
  for (const std::string& pattern : patterns) mark(pattern, marked);
  std::vector<const Function*> found;
  for (size_t i = 0; i < marked.size(); ++i)
    if (marked[i]) found.push_back(&kFunctions[i]);
  if (found.empty())
    throw Failure(
        fmt::format("no function matches {}; `luxvm list` shows them all", in_quotes(patterns[0])));
  return found;
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
