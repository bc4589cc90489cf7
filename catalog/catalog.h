// SPDX-License-Identifier: MIT
//
// Every vector function as data and behind one calling form, for the programs around the library:
// command line, measurements, tests.
#ifndef LUX_CATALOG_CATALOG_H
#define LUX_CATALOG_CATALOG_H

#include "core/shapes.h"
#include "luxvmk3.h"

#include <string_view>

struct ElementType {
  std::string_view name;  // 32f
  char letter;
  int width;  // bytes of one real number
  int parts;  // real numbers in an element: 2 when complex

  constexpr int bytes() const { return width * parts; }
  constexpr bool complex() const { return parts == 2; }
};

struct Shape {
  std::string_view name;  // 2_1
  int sources, destinations;
  bool scalar;
};

struct Arrays {
  const void* source[2] = {};
  void* destination[2] = {};
  const void* scalar = nullptr;
};

struct Function {
  std::string_view name, family, grade;  // the rounding functions have no grade
  ElementType type;
  Shape shape;
  int row, variant;  // of the cost table; -1 without a grade: never threaded
  bool counts;       // checks nothing, and the result is the number of elements, not a status
  Status (*call)(const Arrays& arrays, int32_t len);

  constexpr bool graded() const { return !grade.empty(); }
  constexpr bool is(std::string_view f, std::string_view t) const {
    return family == f && type.name == t;
  }
};

namespace catalog_detail {

template <class E>
const E* source(const Arrays& a, int i) {
  return static_cast<const E*>(a.source[i]);
}
template <class E>
E* destination(const Arrays& a, int i) {
  return static_cast<E*>(a.destination[i]);
}

template <class E>
Status call(Status (*f)(const E*, E*, int32_t), const Arrays& a, int32_t len) {
  return f(source<E>(a, 0), destination<E>(a, 0), len);
}
template <class E>
Status call(Status (*f)(const E*, const E*, E*, int32_t), const Arrays& a, int32_t len) {
  return f(source<E>(a, 0), source<E>(a, 1), destination<E>(a, 0), len);
}
template <class E>
Status call(Status (*f)(const E*, E*, E*, int32_t), const Arrays& a, int32_t len) {
  return f(source<E>(a, 0), destination<E>(a, 0), destination<E>(a, 1), len);
}

// The words of a scalar lie on the stack as it does. Passed as a number it might go through the x87
// unit, which quiets a signalling NaN and raises flags.
template <class E>
struct ScalarWords {
  uint32_t word[sizeof(E) / 4];
};

template <class E>
Status call(Status (*f)(const E*, E, E*, int32_t), const Arrays& a, int32_t len) {
  using ByWords = Status (*)(const E*, ScalarWords<E>, E*, int32_t);
  const auto by_words = reinterpret_cast<ByWords>(reinterpret_cast<void (*)()>(f));
  return by_words(source<E>(a, 0), *static_cast<const ScalarWords<E>*>(a.scalar),
                  destination<E>(a, 0), len);
}

inline constexpr ElementType kType_32f{"32f", 's', 4, 1};
inline constexpr ElementType kType_64f{"64f", 'd', 8, 1};
inline constexpr ElementType kType_32fc{"32fc", 'c', 4, 2};
inline constexpr ElementType kType_64fc{"64fc", 'z', 8, 2};

inline constexpr Shape kShape_1_1{"1_1", 1, 1, false};
inline constexpr Shape kShape_2_1{"2_1", 2, 1, false};
inline constexpr Shape kShape_1_2{"1_2", 1, 2, false};
inline constexpr Shape kShape_2_1_1{"2_1_1", 1, 1, true};

inline constexpr bool STATUS = false, COUNT = true;

// A name that is not declared belongs into include/luxvmk3.h.
#define LUX_CATALOG_CALL(name) [](const Arrays& a, int32_t len) { return call(name, a, len); }
inline constexpr Function kFunctions[] = {
#define LUX_GRADED(F, type, grade, letter, shape, row, variant) \
  {"luxs" #F "_" #type "_" #grade,                              \
   #F,                                                          \
   #grade,                                                      \
   kType_##type,                                                \
   kShape_##shape,                                              \
   row,                                                         \
   variant,                                                     \
   STATUS,                                                      \
   LUX_CATALOG_CALL(luxs##F##_##type##_##grade)},
#define LUX_EXACT(F, type, letter, shape, returns) \
  {"luxs" #F "_" #type,                            \
   #F,                                             \
   "",                                             \
   kType_##type,                                   \
   kShape_##shape,                                 \
   -1,                                             \
   -1,                                             \
   returns,                                        \
   LUX_CATALOG_CALL(luxs##F##_##type)},
#include "core/functions.def"
};

#undef LUX_CATALOG_CALL

}  // namespace catalog_detail

// All of them, in the order of the list.
using catalog_detail::kFunctions;

// A piece of the functions' records is keyed by family and type, or by family and whether it is for
// the complex types.
constexpr bool is_complex(std::string_view type) { return type.ends_with('c'); }

constexpr bool listed(std::string_view family, std::string_view type) {
  for (const Function& f : kFunctions)
    if (f.is(family, type)) return true;
  return false;
}

constexpr bool listed_as(std::string_view family, bool complex) {
  for (const Function& f : kFunctions)
    if (f.family == family && f.type.complex() == complex) return true;
  return false;
}

namespace catalog_detail {

struct Neighbours {
  std::string_view family, type;
  uint64_t best, lower;
};
inline constexpr Neighbours kNeighbours[] = {
#define LUX_NEIGHBOURS(F, type, best, lower) {#F, #type, best, lower},
#include "core/functions.def"
};

inline constexpr struct {
  std::string_view family, type;
} kSpecialBlocks[] = {
#define LUX_SPECIAL_BLOCKS(F, type) {#F, #type},
#include "core/functions.def"
};

}  // namespace catalog_detail

// How many last places a special element may move the results beside it.
constexpr uint64_t neighbours_matter(const Function& f) {
  for (const auto& row : catalog_detail::kNeighbours)
    if (f.is(row.family, row.type)) return f.variant == 0 ? row.best : row.lower;
  return 0;
}

// A block of eight with a special element is computed under the caller's x87 control word, and
// reported by code before index.
constexpr bool has_special_blocks(const Function& f) {
  for (const auto& row : catalog_detail::kSpecialBlocks)
    if (f.is(row.family, row.type)) return true;
  return false;
}

#endif
