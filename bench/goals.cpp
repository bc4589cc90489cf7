// SPDX-License-Identifier: MIT
#include "bench/measure.h"

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
#define GOALS_32fc(F, ...) SINGLE_GOALS(F, 32fc, __VA_ARGS__)
#define GOALS_64fc(F, ...) DOUBLE_GOALS(F, 64fc, __VA_ARGS__)
#define GOALS_EXACT(F, c32, c64) {#F, "32f", "", {EXACT, c32}}, {#F, "64f", "", {EXACT, c64}},
#define GOALS_LARGE_ARGUMENT(type, accuracy, cycles) \
  {"large argument", #type, "", {accuracy, cycles}},
#define GOAL_CALL(cycles) {"call", "", "", {EXACT, cycles}},
#include "bench/goals.def"
};

}  // namespace

const Goal* find_goal(const Function& function) {
  for (const Row& row : kRows)
    if (function.is(row.family, row.type) && function.grade == row.grade) return &row.goal;
  return nullptr;
}

}  // namespace bench
