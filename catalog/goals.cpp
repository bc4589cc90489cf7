// SPDX-License-Identifier: MIT
#include "catalog/goals.h"
#include "catalog/require.h"

namespace bench {
namespace {

using namespace accuracy_words;

struct Row {
  std::string_view family, type, grade;
  Goal goal;
};
constexpr Row kRows[] = {
#define LUX_GOAL(F, type, grade, accuracy, cycles) {#F, #type, #grade, {accuracy, cycles}},
#include "core/functions.def"
};

// What leaves the vector path because its argument is large: sine, cosine, tangent.
constexpr Goal kLargeArgument_32f{ULP(0.501), 90}, kLargeArgument_64f{ULP(0.52), 90};

constexpr const Goal* find(std::string_view family, std::string_view type, std::string_view grade) {
  for (const Row& row : kRows)
    if (row.family == family && row.type == type && row.grade == grade) return &row.goal;
  return nullptr;
}

#define LUX_GRADED(F, type, grade, ...) \
  LUX_REQUIRE(find(#F, #type, #grade),  \
              #F " " #type " " #grade ": no LUX_GOALS_" #type " in core/functions.def");
#define LUX_EXACT(F, type, ...) \
  LUX_REQUIRE(find(#F, #type, ""), #F " " #type ": no LUX_GOALS_EXACT in core/functions.def");
#include "core/functions.def"

}  // namespace

const Goal* find_goal(const Function& function) {
  return find(function.family, function.type.name, function.grade);
}

const Goal* find_large_argument_goal(const Function& function) {
  return function.type.width == 4 ? &kLargeArgument_32f : &kLargeArgument_64f;
}

double call_goal() { return 60; }

}  // namespace bench
