// SPDX-License-Identifier: MIT
#include "core/topology.h"

#include <cpuid.h>
#include <omp.h>
#include <string.h>

int32_t HHTs_count, Core_count, Proc_count, logic_MaxThreads;
float logic_A_const = kNotComputed;

static void execute_cpuid(uint32_t leaf, uint32_t subleaf, uint32_t r[4]) {
  __cpuid_count(leaf, subleaf, r[0], r[1], r[2], r[3]);
}

void (*nox_cpuid)(uint32_t leaf, uint32_t subleaf, uint32_t registers[4]) = execute_cpuid;

// A thread pair shares a core, a package or nothing; each kind has its price in cycles.
constexpr float kAcrossPackages = 9000.0f;
constexpr float kAcrossCores = 60000.0f;
constexpr float kWithinCore = 500000.0f;

struct Shares {
  long double packages, cores, threads;
};

static Shares pair_shares(int32_t logical, int32_t cores, int32_t packages) {
  const long double others = logical - 1;
  return {(packages - 1) * (logical / packages) / others,
          (cores / packages - 1) * (logical / cores) / others, (logical / cores - 1) / others};
}

long double start_up_cost(int32_t logical, int32_t cores, int32_t packages) {
  const Shares share = pair_shares(logical, cores, packages);
  return kAcrossPackages * share.packages + kAcrossCores * share.cores +
         kWithinCore * share.threads;
}

// The list holds one vendor's 12 characters after the other's.
static bool is_tuned_for(const uint32_t (&vendor)[3]) {
  static const char kVendors[] = LUX_CPU_VENDORS;
  for (size_t at = 0; at + sizeof vendor < sizeof kVendors; at += sizeof vendor)
    if (memcmp(vendor, kVendors + at, sizeof vendor) == 0) return true;
  return false;
}

static int32_t at_least_one(int32_t count) { return count < 1 ? 1 : count; }

// Other threads may be storing the same value, or reading it, at this moment.
static void store(int32_t* count, int32_t value) {
  __atomic_store_n(count, value, __ATOMIC_RELAXED);
}

static void publish(float cost) { __atomic_store(&logic_A_const, &cost, __ATOMIC_RELEASE); }

void CalculateLogicConsts() {
  uint32_t r[4];  // eax, ebx, ecx, edx
  nox_cpuid(0, 0, r);
  const uint32_t highest_leaf = r[0];
  const uint32_t vendor[3] = {r[1], r[3], r[2]};
  if (!is_tuned_for(vendor) || highest_leaf < 1) {
    store(&logic_MaxThreads, 1);
    return publish(kNeverThread);
  }

  nox_cpuid(1, 0, r);
  const int32_t logical_per_package = r[1] >> 16 & 0xFF;
  const bool hyper_threading = r[3] >> 28 & 1;
  int32_t cores_per_package = 1;
  if (highest_leaf >= 4) {
    nox_cpuid(4, 0, r);
    cores_per_package = (r[0] >> 26) + 1;
  }

  // Processors that CPUID tells of may be out of reach (affinity masks, containers), and id spaces
  // are rounded up to powers of two, so no quotient may be trusted to be positive.
  const int32_t logical = at_least_one(omp_get_num_procs());
  int32_t cores = logical, packages = logical;
  if (hyper_threading) {
    const int32_t logical_per_core = at_least_one(logical_per_package / cores_per_package);
    cores = at_least_one(logical / logical_per_core);
    packages = at_least_one(cores / cores_per_package);
  }
  store(&HHTs_count, logical);
  store(&Core_count, cores);
  store(&Proc_count, packages);
  if (logical == 1) return publish(kNeverThread);

  const Shares share = pair_shares(logical, cores, packages);
  store(&logic_MaxThreads, share.packages != 0 ? packages : share.cores != 0 ? cores : logical);
  publish(float(start_up_cost(logical, cores, packages)));
}
