// SPDX-License-Identifier: MIT
//
// The wide library's one export: what it is, what it needs, its steps. Compiled for any processor: it
// runs before it is known that the steps can.
#include "core/wide.h"

#include <cpuid.h>

#include <wide_identity.h>  // made by the build: LUX_WIDE_IDENTITY

#define LUX_WIDE_STEP(step, type, export)                                                    \
  int32_t wide_##step(const Arrays<LUX_ELEMENT_##type>& arrays, int32_t first, int32_t last, \
                      uint32_t* x87_flags);
#include "core/wide.def"

// Both halves of the long registers are saved when the system switches between threads.
static bool system_keeps_registers() {
  uint32_t low, high;
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (low & 6) == 6;
}

static const char* missing() {
  uint32_t a, b, c = 0, d;
  if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & bit_AVX)) return "the processor has no AVX";
  if (!(c & bit_OSXSAVE) || !system_keeps_registers())
    return "the system does not keep the AVX registers";
  if (!(c & bit_FMA)) return "the processor has no FMA";
  if (!__get_cpuid_count(7, 0, &a, &b, &c, &d) || !(b & bit_AVX2))
    return "the processor has no AVX2";
  return nullptr;
}

extern "C" {
__attribute__((visibility("default"))) WideLibrary luxvmk3_wide = {
    {
        LUX_WIDE_IDENTITY,
        kNeverWide,
        missing,
#define LUX_WIDE_EXPORT(export) #export " "
#include "core/wide.def"
    },
#define LUX_WIDE_STEP(step, type, export) wide_##step,
#include "core/wide.def"
};
}
