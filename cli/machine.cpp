// SPDX-License-Identifier: MIT
#include "cli/machine.h"

#include <cpuid.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

std::vector<std::string> tuned_vendors() {
  std::vector<std::string> all;
  const std::string text = LUX_CPU_VENDORS;
  for (size_t at = 0; at < text.size(); at += 12) all.push_back(text.substr(at, 12));
  return all;
}

static Leaf cpuid(uint32_t leaf) {
  Leaf r;
  __cpuid_count(leaf, 0, r.eax, r.ebx, r.ecx, r.edx);
  return r;
}

static std::string text_of(std::initializer_list<uint32_t> words) {
  std::string text;
  for (uint32_t word : words) text.append(reinterpret_cast<const char*>(&word), 4);
  return text.substr(0, text.find('\0'));
}

static std::string brand_text() {
  if (cpuid(0x80000000).eax < 0x80000004) return "";
  std::string brand;
  for (uint32_t leaf = 0x80000002; leaf <= 0x80000004; ++leaf) {
    const Leaf r = cpuid(leaf);
    brand += text_of({r.eax, r.ebx, r.ecx, r.edx});
  }
  const size_t first = brand.find_first_not_of(' ');
  return first == std::string::npos ? "" : brand.substr(first);
}

// The processors of the affinity mask; a mask beyond the buffer is refused with EINVAL.
static int32_t available_processors() {
  for (int most = 1024; most <= 1 << 20; most *= 4) {
    cpu_set_t* mask = CPU_ALLOC(most);
    if (!mask) break;
    const size_t size = CPU_ALLOC_SIZE(most);
    CPU_ZERO_S(size, mask);
    const int error = sched_getaffinity(0, size, mask) == 0 ? 0 : errno;
    const int count = error ? 0 : CPU_COUNT_S(size, mask);
    CPU_FREE(mask);
    if (count > 0) return count;
    if (error != EINVAL) break;
  }
  return std::max(1, int32_t(sysconf(_SC_NPROCESSORS_ONLN)));
}

static int32_t at_least_one(int32_t value, bool& clamped) {
  clamped |= value < 1;
  return std::max(value, 1);
}

static void count_cores(Machine& m) {
  const int32_t n = m.processors;
  if (m.hyperthreading) {
    m.threads_per_core = at_least_one(m.logical_per_package / m.cores_per_package, m.clamped);
    m.cores = at_least_one(n / m.threads_per_core, m.clamped);
    m.packages = at_least_one(m.cores / m.cores_per_package, m.clamped);
  } else {
    m.threads_per_core = 1;
    m.cores = m.packages = n;
  }
}

// Shares of the thread pairs on different packages, on different cores of one package and on the
// same core; the quotients of counts are whole numbers.
static void weigh(Machine& m) {
  const int32_t n = m.processors, q = m.cores, p = m.packages;
  m.packages_weight = double(int64_t(p - 1) * (n / p)) / (n - 1);
  m.cores_weight = double(int64_t(q / p - 1) * (n / q)) / (n - 1);
  m.core_weight = double(n / q - 1) / (n - 1);
  m.start_cost =
      float(9000.0 * m.packages_weight + 60000.0 * m.cores_weight + 500000.0 * m.core_weight);
}

Machine probe_machine() {
  Machine m{};
  m.leaf0 = cpuid(0);
  m.vendor = text_of({m.leaf0.ebx, m.leaf0.edx, m.leaf0.ecx});
  m.brand = brand_text();
  m.leaf1 = m.leaf0.eax >= 1 ? cpuid(1) : Leaf{};
  m.leaf4 = m.leaf0.eax >= 4 ? cpuid(4) : Leaf{};
  m.processors = available_processors();
  m.tuned = m.leaf0.eax >= 1 && std::ranges::count(tuned_vendors(), m.vendor) > 0;
  m.hyperthreading = m.leaf1.edx >> 28 & 1;
  m.logical_per_package = m.leaf1.ebx >> 16 & 255;
  m.cores_per_package = int32_t(m.leaf4.eax >> 26) + 1;
  count_cores(m);
  m.start_cost = -1;
  if (m.tuned && m.processors > 1) weigh(m);
  return m;
}
