// SPDX-License-Identifier: MIT
//
// How many processors, cores and packages there are, and what starting one more thread costs.
#ifndef LUX_CORE_TOPOLOGY_H
#define LUX_CORE_TOPOLOGY_H

#include <stdint.h>

constexpr float kNotComputed = 0.0f;
constexpr float kNeverThread = -1.0f;

extern "C" {
extern int32_t HHTs_count;        // logical processors available
extern int32_t Core_count;        // processor cores
extern int32_t Proc_count;        // processor packages
extern int32_t logic_MaxThreads;  // threads that fill the widest level of the topology
extern float logic_A_const;       // start-up cost of one more thread in cycles, or one of the above

// Reads one CPUID leaf into eax, ebx, ecx, edx. Tests replace it to impose a topology.
extern void (*nox_cpuid)(uint32_t leaf, uint32_t subleaf, uint32_t registers[4]);

// Fills the five values. Threads may race here: all of them store the same.
void CalculateLogicConsts();
}

// Start-up cost of one more thread from the three counts.
long double start_up_cost(int32_t logical, int32_t cores, int32_t packages);

// logic_A_const; once it is not kNotComputed the counts are visible too.
static inline float load_start_up_cost() {
  float cost;
  __atomic_load(&logic_A_const, &cost, __ATOMIC_ACQUIRE);
  return cost;
}

#endif
