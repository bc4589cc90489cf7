// SPDX-License-Identifier: MIT
//
// The cost tables, made of the function list: each function's cycles stand at its row. They feed only
// the decision when a call is worth splitting. A best grade of 0 means: never split.
#ifndef LUX_CORE_COST_TABLES_H
#define LUX_CORE_COST_TABLES_H

#include <stdint.h>

struct CyclesPerElement {
  double best_grade;  // A24, A53
  double next_grade;  // A21, A50
};

namespace cost_detail {

struct Listed {
  const char *family, *type;
  int32_t row, variant;

  constexpr bool is_best_of(const char* t) const { return variant == 0 && same(type, t); }
  static constexpr bool same(const char* a, const char* b) {
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
  }
};
constexpr Listed kListed[] = {
#define LUX_GRADED(family, type, grade, letter, shape, row, variant) {#family, #type, row, variant},
#include "core/functions.def"
};

struct Cycles {
  const char *family, *type;
  CyclesPerElement cycles;
};
constexpr Cycles kCycles[] = {
#define LUX_CYCLES(family, type, best, next) {#family, #type, {best, next}},
#include "core/functions.def"
};

constexpr const CyclesPerElement* cycles_of(const char* family, const char* type) {
  for (const Cycles& c : kCycles)
    if (Listed::same(c.family, family) && Listed::same(c.type, type)) return &c.cycles;
  return nullptr;
}

constexpr int32_t functions_at(const char* type, int32_t row) {
  int32_t count = 0;
  for (const Listed& f : kListed) count += f.is_best_of(type) && f.row == row;
  return count;
}

constexpr int32_t rows_of(const char* type) {
  int32_t rows = 0;
  for (const Listed& f : kListed) rows += f.is_best_of(type);
  return rows;
}

#define LUX_GRADED(family, type, grade, letter, shape, row, variant)                         \
  static_assert(variant != 0 || cycles_of(#family, #type),                                   \
                #family " " #type ": no LUX_CYCLES in core/functions.def");                  \
  static_assert(variant != 0 || (0 <= row && row < rows_of(#type)),                          \
                #family " " #type ": in core/functions.def its row leaves a gap before it"); \
  static_assert(variant != 0 || functions_at(#type, row) == 1,                               \
                #family " " #type ": in core/functions.def another function has the same row");
#include "core/functions.def"

template <int32_t kRows>
struct Table {
  CyclesPerElement rows[kRows];
};

template <int32_t kRows>
constexpr Table<kRows> table(const char* type) {
  Table<kRows> result{};
  for (const Listed& f : kListed)
    if (f.is_best_of(type))
      if (const CyclesPerElement* const cycles = cycles_of(f.family, f.type))
        if (0 <= f.row && f.row < kRows) result.rows[f.row] = *cycles;
  return result;
}

constexpr auto kTable_32f = table<rows_of("32f")>("32f");
constexpr auto kTable_64f = table<rows_of("64f")>("64f");
constexpr auto kTable_32fc = table<rows_of("32fc")>("32fc");
constexpr auto kTable_64fc = table<rows_of("64fc")>("64fc");

}  // namespace cost_detail

static constexpr const auto& sCpeTable = cost_detail::kTable_32f.rows;
static constexpr const auto& dCpeTable = cost_detail::kTable_64f.rows;
static constexpr const auto& cCpeTable = cost_detail::kTable_32fc.rows;
static constexpr const auto& zCpeTable = cost_detail::kTable_64fc.rows;

#endif
