// SPDX-License-Identifier: MIT
//
// The rows of special_values.def and complex_values.def, tried at every place of short arrays.
#ifndef LUX_CONFORMANCE_SPECIAL_VALUES_H
#define LUX_CONFORMANCE_SPECIAL_VALUES_H

#include "conformance/complex_values.h"

#include <string>
#include <vector>

namespace bench {

// The function's rows of both tables.
std::vector<SpecialRow> special_rows(const Function& function);

struct SpecialOutcome {
  int rows = 0;                       // that the table has for the function
  int cases = 0;                      // calls compared: each row at each place of each length
  std::vector<std::string> failures;  // one for a row, with the first place where it fails
};

// Every row stands at every place of arrays of plain values, lengths 1 to 12: in each lane of a
// block and in the tail. Compared are the result's bits, the status, and that the neighbours come
// out as if nothing special stood there.
SpecialOutcome check_special_values(const Function& function);

}  // namespace bench

#endif
