// SPDX-License-Identifier: MIT
//
// What the library does about a reported element: the x87 exception of its code. A file of its own,
// so that the compiler builds the whole record for it.
#include "core/error.h"

// Constants of the file, because a double that was just stored in halves is loaded after a long wait.
static const double kLargest = 0x1.fffffffffffffp+1023, kSmallest = 0x1p-1022, kOne = 1.0,
                    kZero = 0.0;

// Operands are loaded as volatile so that the operation happens at run time, and the result is
// volatile so that it is rounded to a double: in the extended format neither product leaves the
// range. An exception that the caller has unmasked traps here, on purpose.
static inline double operand(const volatile double& constant) { return constant; }

int32_t _noxStdErrorHandlerExcept(const ErrorRecord* record) {
  [[maybe_unused]] volatile double result;  // never read: a subnormal would raise one more flag
  switch (record->code) {
    case LUX_DOMAIN:
      result = operand(kZero) / operand(kZero);
      break;
    case LUX_POLE:
      result = operand(kOne) / operand(kZero);
      break;
    case LUX_OVERFLOW:
      result = operand(kLargest) * operand(kLargest);
      break;
    case LUX_UNDERFLOW:
      result = operand(kSmallest) * operand(kSmallest);
      break;
  }
  return record->code;
}
