// SPDX-License-Identifier: MIT
#include "accuracy/promises.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace bench {

Accuracy guarantee(const Function& function) {
  if (!function.graded()) return {Accuracy::kExact, 0};
  const bool power = function.family == "Pow" || function.family == "Powx";
  if (function.type.complex() && power)
    return find_goal(function)->accuracy;  // a component of a power may cancel without limit
  // From the processor's estimate, whatever processor it is. InvSqrt beside special elements, on the
  // x87 unit, is as good where the caller rounds to nearest at 53 bits or more, as here.
  if (function.is("Sqrt", "32f")) return {Accuracy::kUlp, 0.99};
  if (function.is("InvSqrt", "32f")) return {Accuracy::kUlp, 0.995};
  if (function.is("Hypot", "64f")) return {Accuracy::kUlp, 1.23};
  if (function.grade == "A11") return {Accuracy::kRelativeBits, 11};
  if (function.grade == "A21") return {Accuracy::kRelativeBits, 21};
  if (function.grade == "A50") return {Accuracy::kUlp, 4};
  return {Accuracy::kUlp, 1};
}

bool within(const Statistics& statistics, const Accuracy& bound) {
  constexpr double kRounding = 0.00005;
  if (statistics.mismatches > 0) return false;
  switch (bound.kind) {
    case Accuracy::kUlp:
      return statistics.max_ulp() < bound.value + kRounding;
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
      return fmt::format("{:g} ulp", accuracy.value);
    case Accuracy::kRelativeBits:
      return fmt::format("2^-{:g}", accuracy.value);
    case Accuracy::kNormwiseBits:
      return fmt::format("2^-{:g} normwise", accuracy.value);
    default:
      return "exact";
  }
}

// |w log z| < 2^60: beyond, the angle is known to fewer bits than its whole turns take.
static bool promised_power(const Argument& argument, int width) {
  const auto part = [&](size_t i) { return (long double)(as_double(argument[i], width)); };
  const long double magnitude = std::hypot(part(0), part(1));
  const long double log = std::hypot(std::log(magnitude), std::atan2(part(1), part(0)));
  return std::hypot(part(2), part(3)) * log < 0x1p60L;
}

bool promised(const Function& function, const Argument& argument) {
  if (function.type.complex() && (function.family == "Pow" || function.family == "Powx"))
    return promised_power(argument, function.type.width);
  if (!function.is("Hypot", "64f")) return true;
  // The sum of the squares must be a normal double, or both arguments so small that they are
  // scaled.
  const double x = std::fabs(as_double(argument[0], 8)), y = std::fabs(as_double(argument[1], 8));
  const double larger = std::max(x, y);
  return larger < 0x1p-523 || (larger >= 0x1p-511 && std::hypot(x, y) < 0x1p512);
}

}  // namespace bench
