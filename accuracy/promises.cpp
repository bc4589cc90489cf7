// SPDX-License-Identifier: MIT
#include "accuracy/promises.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

using namespace accuracy_words;

constexpr struct {
  std::string_view family, type;
  Accuracy accuracy;
} kExceptions[] = {
#define LUX_PROMISE(F, type, accuracy) {#F, #type, accuracy},
#include "core/functions.def"
};

constexpr struct {
  std::string_view family, type;
} kNearest[] = {
#define LUX_NEAREST(F, type) {#F, #type},
#include "core/functions.def"
};

}  // namespace

Accuracy guarantee(const Function& function) {
  if (!function.graded()) return EXACT;
  const Accuracy lower = function.grade == "A11" ? BITS(11) : BITS(21);
  const bool is_lower = function.grade == "A11" || function.grade == "A21";
  const bool best = function.grade == "A24" || function.grade == "A53";
  for (const auto& row : kNearest)
    if (best && function.is(row.family, row.type)) return NEAREST;
  for (const auto& row : kExceptions)
    if (function.is(row.family, row.type))
      return is_lower && row.accuracy.kind == Accuracy::kNormwiseBits ? NORMWISE(lower.value)
                                                                      : row.accuracy;
  if (is_lower) return lower;
  return function.grade == "A50" ? ULP(4) : ULP(1);
}

bool within(const Statistics& statistics, const Accuracy& bound) {
  constexpr double kRounding = 0.00005;
  if (statistics.mismatches > 0) return false;
  switch (bound.kind) {
    case Accuracy::kUlp:
      return statistics.max_ulp() < bound.value + kRounding;
    case Accuracy::kNearest:
      return statistics.not_nearest == 0;
    case Accuracy::kRelativeBits:
      return statistics.max_relative <= std::exp2(-bound.value);
    case Accuracy::kNormwiseBits:
      return statistics.max_normwise <= std::exp2(-bound.value);
    default:
      return statistics.max_ulp() == 0;
  }
}

std::string text_of(const Accuracy& accuracy) {
  switch (accuracy.kind) {
    case Accuracy::kUlp:
    case Accuracy::kNearest:
      return fmt::format("{:g} ulp", accuracy.value);
    case Accuracy::kRelativeBits:
      return fmt::format("2^-{:g}", accuracy.value);
    case Accuracy::kNormwiseBits:
      return fmt::format("2^-{:g} normwise", accuracy.value);
    default:
      return "exact";
  }
}

namespace {

// |w log z| < 2^60: beyond, the angle is known to fewer bits than its whole turns take.
bool angle_is_known(const Argument& argument, int width) {
  const auto part = [&](size_t i) { return (long double)(as_double(argument[i], width)); };
  const long double magnitude = std::hypot(part(0), part(1));
  const long double log = std::hypot(std::log(magnitude), std::atan2(part(1), part(0)));
  return std::hypot(part(2), part(3)) * log < 0x1p60L;
}

// The sum of the squares must be a normal double, or both arguments so small that they are scaled.
bool squares_add_up(const Argument& argument, int width) {
  const double x = std::fabs(as_double(argument[0], width));
  const double y = std::fabs(as_double(argument[1], width));
  const double larger = std::max(x, y);
  return larger < 0x1p-523 || (larger >= 0x1p-511 && std::hypot(x, y) < 0x1p512);
}

constexpr struct {
  std::string_view family, type;
  bool (*covers)(const Argument& argument, int width);
} kConditions[] = {
#define LUX_PROMISED_WHERE(F, type, condition) {#F, #type, condition},
#include "core/functions.def"
};

}  // namespace

bool promised(const Function& function, const Argument& argument) {
  for (const auto& row : kConditions)
    if (function.is(row.family, row.type)) return row.covers(argument, function.type.width);
  return true;
}

}  // namespace bench
