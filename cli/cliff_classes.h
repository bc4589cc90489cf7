// SPDX-License-Identifier: MIT
//
// Classes of arguments that may cost more than the ordinary ones, for any function, from its record
// and from its rows of special values.
#ifndef LUX_CLI_CLIFF_CLASSES_H
#define LUX_CLI_CLIFF_CLASSES_H

#include "bench/arguments.h"

#include <string>
#include <vector>

struct CliffClass {
  std::string name;
  std::vector<bench::Element> elements;  // never empty
  bool changes_scalar;                   // so no single element can be of the class
};

std::vector<CliffClass> cliff_classes(const Function& function);

#endif
