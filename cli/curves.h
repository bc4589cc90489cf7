// SPDX-License-Identifier: MIT
//
// The curves of a function over its first argument: its values, and its largest errors.
#ifndef LUX_CLI_CURVES_H
#define LUX_CLI_CURVES_H

#include "catalog/lookup.h"
#include "cli/cli.h"
#include "cli/plot.h"

#include <optional>
#include <string>
#include <vector>

// The grades of one family and type, in the order of the list.
using Grades = std::vector<const Function*>;

// Where the first argument runs, or its real part when it is complex.
struct Range {
  double low, high;
};

// "A:B", with infinities for the ends of the line of all numbers; `option` is named by the Failure.
Range range_in(const std::string& text, const char* option);

struct CurveOptions {
  std::optional<Range> range;  // the family's typical interval when there is none
  // The second source or the scalar, or the imaginary part of a complex function of one argument;
  // typical ones where it is empty.
  std::string second;
  int samples = 100'000;  // of an error curve, over all of its columns
  int processors = 1;
};

// A Failure if the second argument is none of this function.
void check_second(const Function& function, const std::string& second);

// Of the best grade.
Panel value_panel(const Grades& grades, const CurveOptions& options);

// The largest error in each column of the picture, per grade, each beside its promise. Grades that
// share one computation share a curve.
Panel error_panel(const Grades& grades, const CurveOptions& options);

// The same of reports over the whole line, whose envelopes are known.
Panel error_panel(const Grades& grades, const std::vector<Json>& envelopes);

#endif
