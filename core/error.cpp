// SPDX-License-Identifier: MIT
//
// Reports of single elements, turned into x87 exceptions.
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

// The pointers are read without the index: kernels pass the bases of their arrays.
template <class E>
static int32_t report(int32_t code, int32_t index, const E* argument1, const E* argument2,
                      const E* result1, const E* result2, const char* name) {
  const ErrorRecord record = {code,     index,    *argument1,     *argument2,
                              *result1, *result2, {name[0], '\0'}};
  return _noxStdErrorHandlerExcept(&record);
}

int32_t noxsError(int32_t code, int32_t index, const float* argument1, const float* argument2,
                  const float* result1, const float* result2, const char* name) {
  return report(code, index, argument1, argument2, result1, result2, name);
}

int32_t noxdError(int32_t code, int32_t index, const double* argument1, const double* argument2,
                  const double* result1, const double* result2, const char* name) {
  return report(code, index, argument1, argument2, result1, result2, name);
}
