// SPDX-License-Identifier: MIT
//
// The processor as the threading decision of the library sees it.
#ifndef LUX_CLI_MACHINE_H
#define LUX_CLI_MACHINE_H

#include <cstdint>
#include <string>
#include <vector>

struct Leaf {
  uint32_t eax, ebx, ecx, edx;
};

struct Machine {
  std::string vendor, brand;
  Leaf leaf0, leaf1, leaf4;     // leaf 4: all zero when the processor has none
  int32_t processors;           // available to this process
  bool tuned;                   // the vendor is one that threading is tuned for
  bool hyperthreading;          // logical processors of a package may share a core
  int32_t logical_per_package;  // L
  int32_t cores_per_package;    // K
  int32_t threads_per_core;     // t
  int32_t cores, packages;      // Q, P
  bool clamped;                 // t, Q or P came out below 1 and was raised
  double packages_weight, cores_weight, core_weight;
  float start_cost;  // A: cycles to add a thread, -1 for never
};

Machine probe_machine();

std::vector<std::string> tuned_vendors();

#endif
