// SPDX-License-Identifier: MIT
//
// A program's own report functions, which the library calls instead of its own: they keep what they
// are told. Included by one file of a program.
#ifndef LUX_TESTS_REPORTS_H
#define LUX_TESTS_REPORTS_H

#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "luxvmk3.h"

constexpr unsigned char kUnwritten = 0xA5;  // fills destinations where `stored` is asked for

struct Report {
  int32_t code, index;
  const void *argument1, *argument2, *result1, *result2;
  std::string name;
  bool stored;                          // results of the element were there when it was reported
  unsigned char first_of_argument2[8];  // a scalar is the kernel's copy, gone after the call

  bool is(int32_t other_code, int32_t other_index, const std::string& other_name) const {
    return code == other_code && index == other_index && name == other_name;
  }
};
static std::vector<Report> reports;
static std::mutex reports_lock;    // slices report from their own threads
static const double* replacement;  // for reported doubles, if set

template <class E>
static int32_t keep_report(int32_t code, int32_t index, const E* a1, const E* a2, const E* r1,
                           const E* r2, const char* name) {
  E unwritten;
  memset(&unwritten, kUnwritten, sizeof unwritten);
  const auto written = [&](const E* result) {
    return memcmp(result + index, &unwritten, sizeof unwritten) != 0;
  };
  const std::lock_guard guard(reports_lock);
  reports.push_back({code, index, a1, a2, r1, r2, name, written(r1) && written(r2), {}});
  memcpy(reports.back().first_of_argument2, a2, sizeof *a2);
  if (replacement) const_cast<E*>(r1)[index] = E(*replacement);
  return 0;  // not used by the library
}
int32_t noxsError(int32_t code, int32_t index, const float* a1, const float* a2, const float* r1,
                  const float* r2, const char* name) {
  return keep_report(code, index, a1, a2, r1, r2, name);
}
int32_t noxdError(int32_t code, int32_t index, const double* a1, const double* a2, const double* r1,
                  const double* r2, const char* name) {
  return keep_report(code, index, a1, a2, r1, r2, name);
}

#endif
