// SPDX-License-Identifier: MIT
//
// Measured errors as JSON: whole, to go on with later, or as a report to read.
#ifndef LUX_ACCURACY_RECORD_H
#define LUX_ACCURACY_RECORD_H

#include "accuracy/exhaustive.h"
#include "catalog/json.h"

namespace bench {

Json record_of(const Statistics& statistics);
Statistics statistics_of(const Json& record);
Json record_of(const Exhaustion& exhaustion);
Exhaustion exhaustion_of(const Json& record);

// One function's entry: largest error with its argument, mean, histogram, the ten worst, the same
// by range of the first argument, guarantee and goal.
Json report_of(const Function& function, const Statistics& statistics, bool exhaustive);

std::string hex(uint64_t bits, int width);

}  // namespace bench

#endif
