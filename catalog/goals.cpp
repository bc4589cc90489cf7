// SPDX-License-Identifier: MIT
#include "catalog/goals.h"

namespace bench {
namespace {

struct Row {
  std::string_view family, type, grade;
  Goal goal;
};

constexpr Accuracy ULP(double units) { return {Accuracy::kUlp, units}; }
constexpr Accuracy BITS(double bits) { return {Accuracy::kRelativeBits, bits}; }
constexpr Accuracy NORMWISE(double bits) { return {Accuracy::kNormwiseBits, bits}; };
constexpr Accuracy EXACT{Accuracy::kExact, 0};

#define SINGLE_GOALS(F, type, a24, a21, a11, c24, c21, c11) \
  {#F, #type, "A24", {a24, c24}}, {#F, #type, "A21", {a21, c21}}, {#F, #type, "A11", {a11, c11}},
#define DOUBLE_GOALS(F, type, a53, a50, c53, c50) \
  {#F, #type, "A53", {a53, c53}}, {#F, #type, "A50", {a50, c50}},

constexpr Row kRows[] = {
#define GOALS_32f(F, ...) SINGLE_GOALS(F, 32f, __VA_ARGS__)
#define GOALS_64f(F, ...) DOUBLE_GOALS(F, 64f, __VA_ARGS__)
#define GOALS_COMPLEX(F, a32, a64, c32, c64)          \
  SINGLE_GOALS(F, 32fc, a32, a32, a32, c32, c32, c32) \
  DOUBLE_GOALS(F, 64fc, a64, a64, c64, c64)
#define GOALS_EXACT(F, c32, c64) {#F, "32f", "", {EXACT, c32}}, {#F, "64f", "", {EXACT, c64}},
#define GOALS_LARGE_ARGUMENT(type, accuracy, cycles) \
  {"large argument", #type, "", {accuracy, cycles}},
#define GOAL_CALL(cycles) {"call", "", "", {EXACT, cycles}},
#include "catalog/goals.def"
};

}  // namespace

static const Goal* find(std::string_view family, std::string_view type, std::string_view grade) {
  for (const Row& row : kRows)
    if (row.family == family && row.type == type && row.grade == grade) return &row.goal;
  return nullptr;
}

const Goal* find_goal(const Function& function) {
  return find(function.family, function.type.name, function.grade);
}

const Goal* find_large_argument_goal(const Function& function) {
  return find("large argument", function.type.name, "");
}

double call_goal() { return find("call", "", "")->cycles; }

}  // namespace bench
