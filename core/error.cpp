// SPDX-License-Identifier: MIT
//
// Reports of single elements: a record of the element for the standard handler.
#include "core/error.h"

#include "core/bits.h"

// A report must raise nothing but its own exception, so elements go into the record by their
// patterns: a load into the x87 unit would raise denormal or, for a signalling NaN, invalid. Normal
// singles raise nothing there, and it is the short way.
static void record_element(double* field, const double* element) {
  store_words(field, load_words(element));
}

__attribute__((noinline)) static void record_other_than_normal(double* field,
                                                               const float* element) {
  using Single = Format<float>;
  const uint32_t pattern = quieted<float>(load_bits(element));
  const uint32_t sign = pattern & Single::kSign, size = pattern & ~Single::kSign;
  if (size >= Single::kInf) {
    store_words(field, {size << 29, sign | Upper<double>::kInf | (size & Single::kFraction) >> 3});
  } else if (size == 0) {
    store_words(field, {0, sign});
  } else {  // subnormal: its leading bit becomes the hidden one
    const int32_t shift = __builtin_clz(size) - 8;
    const uint32_t fraction = size << shift & Single::kFraction;
    const uint32_t exponent = uint32_t(Format<double>::kBias - Single::kBias + 1 - shift);
    store_words(field, {fraction << 29, sign | exponent << 20 | fraction >> 3});
  }
}

static inline void record_element(double* field, const float* element) {
  using Single = Format<float>;
  const uint32_t size = upper_magnitude(element);
  if (size - Single::kSmallestNormal < Single::kInf - Single::kSmallestNormal)
    put(field, load_extended(element));
  else
    record_other_than_normal(field, element);
}

// The second of two elements, which most functions have only one of.
template <class E>
static inline void record_other(double* field, const E* element, const double* first_field,
                                const E* first) {
  if (element == first)
    store_words(field, load_words(first_field));
  else
    record_element(field, element);
}

// The pointers are read without the index: kernels pass the bases of their arrays.
template <class E>
static int32_t report(int32_t code, int32_t index, const E* argument1, const E* argument2,
                      const E* result1, const E* result2, const char* name) {
  ErrorRecord record;
  record.code = code;
  record.index = index;
  record_element(&record.argument1, argument1);
  record_element(&record.result1, result1);
  record_other(&record.argument2, argument2, &record.argument1, argument1);
  record_other(&record.result2, result2, &record.result1, result1);
  record.name[0] = name[0];
  record.name[1] = '\0';
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
