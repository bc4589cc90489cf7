// SPDX-License-Identifier: MIT
//
// No piece of a record may stand under a name that the list does not know: it would be passed over.
// That none is missing is asked where the pieces are used.
#include "catalog/catalog.h"

namespace {

constexpr bool REAL = false, COMPLEX = true;

#define TELL(F) "core/functions.def has pieces of " F ", which it does not list"
#define KNOWN(F, type) static_assert(listed(#F, type), TELL(#F " " type));
#define KNOWN_FAMILY(F, kind) static_assert(listed_as(#F, kind), TELL(#F));
#define LUX_INPUT(F, kind, ...) KNOWN_FAMILY(F, kind)
#define LUX_ORACLE(F, kind, ...) KNOWN_FAMILY(F, kind)
#define LUX_LIBM(F, kind, ...) KNOWN_FAMILY(F, kind)
#define LUX_LARGE_INPUT(F, ...) KNOWN_FAMILY(F, REAL)
#define LUX_SLEEF(F, ...) KNOWN_FAMILY(F, REAL)
#define LUX_CYCLES(F, type, ...) KNOWN(F, #type)
#define LUX_GOAL(F, type, ...) KNOWN(F, #type)
#define LUX_PROMISE(F, type, ...) KNOWN(F, #type)
#define LUX_NEAREST(F, type) KNOWN(F, #type)
#define LUX_PROMISED_WHERE(F, type, ...) KNOWN(F, #type)
#define LUX_NEIGHBOURS(F, type, ...) KNOWN(F, #type)
#define LUX_SPECIAL_BLOCKS(F, type) KNOWN(F, #type)
#define LUX_POINT(F, type, ...) KNOWN(F, #type)
#define LUX_GRID(F, type, ...) KNOWN(F, #type)
#define LUX_CELLS(F, type, ...) KNOWN(F, #type)
#define LUX_TO_ONE(F, type, ...) KNOWN(F, #type)
#define LUX_DENSE(F, type, ...) KNOWN(F, #type)
#include "core/functions.def"

}  // namespace
