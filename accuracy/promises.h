// SPDX-License-Identifier: MIT
//
// What the documents promise about accuracy, and whether measured errors keep to it.
#ifndef LUX_ACCURACY_PROMISES_H
#define LUX_ACCURACY_PROMISES_H

#include "accuracy/survey.h"
#include "catalog/goals.h"

namespace bench {

Accuracy guarantee(const Function& function);

// Figures are stated to four decimals and compared so.
bool within(const Statistics& statistics, const Accuracy& bound);

// "0.612 ulp", "2^-21", "2^-52 normwise", "exact".
std::string text_of(const Accuracy& accuracy);

// Whether the promise covers this argument: a method may have documented exceptions.
bool promised(const Function& function, const Argument& argument);

}  // namespace bench

#endif
