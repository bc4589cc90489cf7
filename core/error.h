// SPDX-License-Identifier: MIT
#ifndef LUX_CORE_ERROR_H
#define LUX_CORE_ERROR_H

#include "luxvmk3.h"

// One reported element, as the standard handler sees it.
struct ErrorRecord {
  int32_t code;
  int32_t index;
  double argument1, argument2;
  double result1, result2;
  char name[2];  // the first character of the reporter's name and a zero
};

// Raises the x87 exception that belongs to the record's code, and returns the code.
extern "C" int32_t _noxStdErrorHandlerExcept(const ErrorRecord* record);

#endif
