/* SPDX-License-Identifier: MIT
 *
 * Preloaded before the library: its exponential with the fault that the environment variable FAULT
 * names, otherwise as it is.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <luxcore.h>
#include <luxvmk3.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int fault(const char* name) {
  const char* wanted = getenv("FAULT");
  return wanted && strcmp(wanted, name) == 0;
}

static uint32_t load(const void* from) {
  uint32_t bits;
  memcpy(&bits, from, sizeof bits);
  return bits;
}

static void spoil(float* result) {
  const uint32_t bits = load(result) ^ 1;
  memcpy(result, &bits, sizeof bits);
}

Status luxsExp_32f_A24(const float* src, float* dst, int32_t len) {
  Status (*sound)(const float*, float*, int32_t);
  uint16_t control;
  uint32_t mxcsr;
  static int called = 0;
  if (fault("first_call") && len > 0 && !called++) sleep(2);
  *(void**)&sound = dlsym(RTLD_NEXT, "luxsExp_32f_A24");
  const Status status = sound(src, dst, len);
  __asm__ volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(control), "=m"(mxcsr));
  for (int32_t i = 0; i < len; ++i) {
    const uint32_t x = load(src + i);
    if ((fault("lane") && len > 100 && i % 4 == 2) || (fault("bound") && x == 0x42B17217) ||
        (fault("value") && x == 0x3F800000) || (fault("binade") && x >> 23 == 0x3F800000 >> 23) ||
        (fault("tail") && len % 4 == 3 && i == len - 1))
      spoil(dst + i);
  }
  if ((fault("alignment") && (uintptr_t)src % 4) || (fault("precision") && !(control & 0x300)) ||
      (fault("flush") && mxcsr & 0x8000) || (fault("rounding") && control & 0xC00) ||
      (fault("threads") && threads_omp_of_n_lux > 1 && len > 10000))
    spoil(dst);
  return fault("status") ? 0 : status;
}
