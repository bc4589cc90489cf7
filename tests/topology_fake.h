// SPDX-License-Identifier: MIT
//
// Any processor topology: answers for the CPUID probe and for omp_get_num_procs, which the test
// program defines itself. For programs linked with the library's objects.
#ifndef LUX_TESTS_TOPOLOGY_FAKE_H
#define LUX_TESTS_TOPOLOGY_FAKE_H

#include <omp.h>
#include <string.h>

#include "core/topology.h"
#include "tests/catalog.h"

struct FakeProcessor {
  int32_t available;  // what omp_get_num_procs says
  bool hyper_threading;
  uint32_t logical, cores;  // per package, as CPUID says
  uint32_t highest_leaf = 4;
  const char* vendor = LUX_CPU_VENDORS;  // the first of the list
};
inline FakeProcessor fake_processor = {1, false, 1, 1};

inline void fake_cpuid(uint32_t leaf, uint32_t subleaf, uint32_t r[4]) {
  const FakeProcessor& p = fake_processor;
  memset(r, 0, 4 * sizeof *r);
  if (leaf == 0) {
    r[0] = p.highest_leaf;
    memcpy(&r[1], p.vendor, 4);
    memcpy(&r[3], p.vendor + 4, 4);
    memcpy(&r[2], p.vendor + 8, 4);
  } else if (leaf == 1) {
    r[0] = r[2] = 0xFFFFFFFF;  // of no concern to the probe
    r[1] = 0xFF00FFFFu | p.logical << 16;
    r[3] = p.hyper_threading ? 0xFFFFFFFFu : ~(1u << 28);
  } else if (leaf == 4 && subleaf == 0) {
    r[0] = (p.cores - 1) << 26 | 0x03FFFFFFu;
  }
}

// The next cost function probes anew.
inline void impose(const FakeProcessor& p) {
  fake_processor = p;
  nox_cpuid = fake_cpuid;
  HHTs_count = Core_count = Proc_count = logic_MaxThreads = 0;
  logic_A_const = kNotComputed;
}

// The length above which a call is split between two threads, by its own row.
inline int32_t threshold(const Function& f) {
  const auto min_n = f.type.letter == 's'   ? noxsMinN
                     : f.type.letter == 'd' ? noxdMinN
                     : f.type.letter == 'c' ? noxcMinN
                                            : noxzMinN;
  return min_n(f.row, f.variant, 2);
}

extern "C" int omp_get_num_procs() noexcept { return fake_processor.available; }

#endif
