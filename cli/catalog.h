// SPDX-License-Identifier: MIT
//
// The library's functions as data, made from the function list: any of them can be called by name.
#ifndef LUX_CLI_CATALOG_H
#define LUX_CLI_CATALOG_H

#include "luxvmk3.h"

#include <string>
#include <string_view>
#include <vector>

struct ElementType {
  const char* name;
  char letter;
  int width;  // bytes of one real number
  int parts;  // real numbers in an element: 2 when complex

  int bytes() const { return width * parts; }
};

struct Shape {
  const char* name;
  int sources;
  bool scalar;
  int destinations;
};

struct Arrays {
  const void* source[2];
  const void* scalar;
  void* destination[2];
};

struct Function {
  std::string name, family, grade;  // the rounding functions have no grade
  ElementType type;
  Shape shape;
  int row, variant;  // -1 without a grade: never threaded
  bool counts;       // the result is the number of elements, not a status
  Status (*call)(const Arrays& arrays, int32_t len);  // null: not built yet
};

const std::vector<Function>& catalog();

// The function of that name; otherwise a Failure that names the nearest one.
const Function& find_function(const std::string& name);
// The same, and it must be built.
const Function& find_callable(const std::string& name);

// A glob over the whole name, or without * ? [ a part of it; letter case does not matter.
bool name_matches(const Function& function, const std::string& pattern);

constexpr int32_t kNever = 0x7FFFFFFF;

// The library's threshold for threading, kNever for the functions without a cost row.
int32_t min_n(const Function& function, int32_t threads);

// The meaning of a report code, and of what a function returned.
std::string code_meaning(int32_t code);
std::string status_meaning(const Function& function, Status status);

#endif
