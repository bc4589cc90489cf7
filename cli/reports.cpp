// SPDX-License-Identifier: MIT
#include "cli/reports.h"

#include "luxvmk3.h"

#include <mutex>

static std::mutex guard;
static Reports reports;
static size_t most_kept = 0;

void start_reports(size_t most) {
  const std::lock_guard lock(guard);
  reports = {};
  reports.kept.reserve(most);
  most_kept = most;
}

Reports take_reports() {
  const std::lock_guard lock(guard);
  return std::move(reports);
}

// Called from kernels, which no exception can leave; slices report at the same time.
static int32_t take(int32_t code, int32_t index, const char* name) noexcept {
  const std::lock_guard lock(guard);
  ++reports.by_code[code];
  if (reports.kept.size() < most_kept) reports.kept.push_back({code, index, name ? name : ""});
  return code;
}

int32_t noxsError(int32_t code, int32_t index, const float*, const float*, const float*,
                  const float*, const char* name) {
  return take(code, index, name);
}

int32_t noxdError(int32_t code, int32_t index, const double*, const double*, const double*,
                  const double*, const char* name) {
  return take(code, index, name);
}
