// SPDX-License-Identifier: MIT
//
// No function without special values.
#include "catalog/catalog.h"

namespace {

constexpr struct {
  std::string_view family, type;
} kCovered[] = {
#define OF(family, type, grades) {#family, #type},
#define ROW_1_1(...)
#define ROW_2_1(...)
#define ROW_2_1_1(...)
#define ROW_1_2(...)
#define ROUNDING(type, ...) \
  OF(Floor, type, ALL)      \
  OF(Ceil, type, ALL)       \
  OF(Trunc, type, ALL) OF(Round, type, ALL) OF(NearbyInt, type, ALL) OF(Rint, type, ALL)
#include "conformance/special_values.def"
#define FUNCTIONS(family, symmetry, relative, relation) FUNCTION(family, ) FUNCTION(relative, )
#define FUNCTION(family, ...) {#family, "32fc"}, {#family, "64fc"},
#define ACROSS(...)
#define AT(...)
#define ALONE(...)
#define POWER(...)
#include "conformance/complex_values.def"
};

constexpr bool covered(std::string_view family, std::string_view type) {
  for (const auto& row : kCovered)
    if (row.family == family && row.type == type) return true;
  return false;
}

#define LUX_FUNCTION(F, type)       \
  static_assert(covered(#F, #type), \
                #F " " #type ": no rows in conformance/special_values.def or complex_values.def");
#include "core/functions.def"

}  // namespace
