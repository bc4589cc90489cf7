// SPDX-License-Identifier: MIT
//
// From which length on a call pays for starting threads.
#include "core/control.h"
#include "core/cost_tables.h"
#include "core/topology.h"
#include "luxvmk3.h"

constexpr int32_t kNever = 0x7FFFFFFF;

// Take one thread off a copy of the topology, the widest level first. False when none is left.
struct Topology {
  int32_t logical, cores, packages;

  bool remove_thread() {
    if (packages >= 2) {
      --packages;
      --cores;
    } else if (cores >= 2) {
      --cores;
    } else if (logical < 2) {
      return false;
    }
    --logical;
    return true;
  }
};

static int32_t load(const int32_t* count) { return __atomic_load_n(count, __ATOMIC_RELAXED); }

// The caller's precision and rounding must not move the threshold, which is computed once for all.
template <int32_t kRows>
static int32_t min_n(const CyclesPerElement (&table)[kRows], int32_t row, int32_t variant,
                     int32_t threads) {
  if (load_start_up_cost() == kNotComputed) CalculateLogicConsts();
  const float first_cost = load_start_up_cost();
  if (first_cost == kNeverThread || row < 0 || row >= kRows) return kNever;
  if (table[row].best_grade == 0.0) return kNever;
  // A11, variant 2, has no column: an element takes too little to pay for a thread.
  if (variant != 0 && variant != 1) return kNever;
  const double cycles = variant == 0 ? table[row].best_grade : table[row].next_grade;

  Topology left = {load(&HHTs_count), load(&Core_count), load(&Proc_count)};
  const long double next_cost = start_up_cost(left.logical, left.cores, left.packages);
  long double total = first_cost;
  for (int32_t k = 2; k < threads; ++k) {
    if (!left.remove_thread()) return kNever;
    total += next_cost;
  }
  const long double elements = total / cycles;
  return elements < kNever ? int32_t(elements) : kNever;
}

template <int32_t kRows>
static int32_t min_n_in_extended(const CyclesPerElement (&table)[kRows], int32_t row,
                                 int32_t variant, int32_t threads) {
  const uint16_t caller = x87_enter(X87_EXTENDED);
  const int32_t elements = min_n(table, row, variant, threads);
  x87_leave(caller, X87_EXTENDED);
  return elements;
}

int32_t noxsMinN(int32_t row, int32_t variant, int32_t threads) {
  return min_n_in_extended(sCpeTable, row, variant, threads);
}

int32_t noxdMinN(int32_t row, int32_t variant, int32_t threads) {
  return min_n_in_extended(dCpeTable, row, variant, threads);
}

int32_t noxcMinN(int32_t row, int32_t variant, int32_t threads) {
  return min_n_in_extended(cCpeTable, row, variant, threads);
}

int32_t noxzMinN(int32_t row, int32_t variant, int32_t threads) {
  return min_n_in_extended(zCpeTable, row, variant, threads);
}
