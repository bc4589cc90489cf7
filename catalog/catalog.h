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

// How many last places neighbours may move a result: where a block of four shares one division,
// where the single logarithms take the processor's beside a special element, and where one element
// sends its whole block another way.
constexpr uint64_t neighbours_matter(const Function& f) {
  if (f.is("Inv", "64f") || f.is("Div", "64f") || f.is("Ln", "32f") || f.is("Log10", "32f"))
    return 1;
  const bool turns =
      f.family == "Sin" || f.family == "Cos" || f.family == "SinCos" || f.family == "Tan";
  if (!turns || f.type.complex()) return 0;
  return f.grade == "A24" || f.grade == "A53" ? 1 : 4;
}

// A block of eight with a special element is computed under the caller's x87 control word, and
// reported by code before index.
constexpr bool has_special_blocks(const Function& f) { return f.is("InvSqrt", "32f"); }

#endif
