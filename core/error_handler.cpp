// SPDX-License-Identifier: MIT
//
// What the library does about a reported element: the x87 exception of its code. A file of its own,
// so that the compiler builds the whole record for it.
#include "core/error.h"

// The operands are volatile so that the operation happens at run time, and the result is one so
// that it is rounded to a double: in the extended format neither product leaves the range. An
// exception that the caller has unmasked traps here, on purpose.
int32_t _noxStdErrorHandlerExcept(const ErrorRecord* record) {
  volatile double largest = 0x1.fffffffffffffp+1023, smallest = 0x1p-1022, one = 1.0, zero = 0.0;
  [[maybe_unused]] volatile double result;  // never read: a subnormal would raise one more flag
  switch (record->code) {
    case LUX_DOMAIN:
      result = zero / zero;
      break;
    case LUX_POLE:
      result = one / zero;
      break;
    case LUX_OVERFLOW:
      result = largest * largest;
      break;
    case LUX_UNDERFLOW:
      result = smallest * smallest;
      break;
  }
  return record->code;
}
