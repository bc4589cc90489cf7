// SPDX-License-Identifier: MIT
//
// Every built vector function behind one calling form, so that a test can walk over all of them.
#ifndef LUX_TESTS_CATALOG_H
#define LUX_TESTS_CATALOG_H

#include <string_view>

#include "core/shapes.h"
#include "luxvmk3.h"

struct Arguments {
  const void* src[2];
  void* dst[2];
  const void* scalar;
};

struct Export {
  const char* name;
  std::string_view family, type, grade;  // no grade: a rounding function
  char letter;
  int sources, destinations;
  bool scalar;
  int size, part;  // bytes of an element, of a real or imaginary part
  bool counts;     // checks nothing and returns the loop count
  int row, variant;
  Status (*run)(const Arguments& a, int32_t len);

  bool graded() const { return !grade.empty(); }
  bool is(std::string_view f, std::string_view t) const { return family == f && type == t; }
  // A block of four shares one division, so neighbours may move the last bit.
  bool neighbours_matter() const { return type == "64f" && (family == "Inv" || family == "Div"); }
  // A block of eight with a special element is computed under the caller's x87 control word, and
  // reported by code before index.
  bool has_special_blocks() const { return type == "32f" && family == "InvSqrt"; }
};

template <class E>
Status call(Status (*f)(const E*, E*, int32_t), const Arguments& a, int32_t len) {
  return f(static_cast<const E*>(a.src[0]), static_cast<E*>(a.dst[0]), len);
}
template <class E>
Status call(Status (*f)(const E*, const E*, E*, int32_t), const Arguments& a, int32_t len) {
  return f(static_cast<const E*>(a.src[0]), static_cast<const E*>(a.src[1]),
           static_cast<E*>(a.dst[0]), len);
}
template <class E>
Status call(Status (*f)(const E*, E*, E*, int32_t), const Arguments& a, int32_t len) {
  return f(static_cast<const E*>(a.src[0]), static_cast<E*>(a.dst[0]), static_cast<E*>(a.dst[1]),
           len);
}
template <class E>
Status call(Status (*f)(const E*, E, E*, int32_t), const Arguments& a, int32_t len) {
  return f(static_cast<const E*>(a.src[0]), *static_cast<const E*>(a.scalar),
           static_cast<E*>(a.dst[0]), len);
}

#define SHAPE_1_1 1, 1, false
#define SHAPE_2_1 2, 1, false
#define SHAPE_1_2 1, 2, false
#define SHAPE_2_1_1 1, 1, true
#define PART_32f 4
#define PART_64f 8
#define PART_32fc 4
#define PART_64fc 8
#define COUNTS_STATUS false
#define COUNTS_COUNT true
#define RUN(name) [](const Arguments& a, int32_t len) { return call(name, a, len); }

inline const Export kCatalog[] = {
#define LUX_GRADED(family, type, grade, letter, shape, row, variant) \
  {"luxs" #family "_" #type "_" #grade,                              \
   #family,                                                          \
   #type,                                                            \
   #grade,                                                           \
   #letter[0],                                                       \
   SHAPE_##shape,                                                    \
   sizeof(LUX_ELEMENT_##type),                                       \
   PART_##type,                                                      \
   false,                                                            \
   row,                                                              \
   variant,                                                          \
   RUN(luxs##family##_##type##_##grade)},
#define LUX_EXACT(family, type, letter, shape, returns) \
  {"luxs" #family "_" #type,                            \
   #family,                                             \
   #type,                                               \
   "",                                                  \
   #letter[0],                                          \
   SHAPE_##shape,                                       \
   sizeof(LUX_ELEMENT_##type),                          \
   PART_##type,                                         \
   COUNTS_##returns,                                    \
   -1,                                                  \
   -1,                                                  \
   RUN(luxs##family##_##type)},
#include "core/functions.def"
};

// Arguments for which a family computes without any exception but inexact, under either sign of
// rounding: the interval of every source.
struct Interval {
  double low, high;
};
inline Interval ordinary_interval(const Export& f) {
  if (f.family == "Acosh") return {1.25, 1.875};
  return {0.25, 0.875};
}

#endif
