// SPDX-License-Identifier: MIT
//
// The two floating-point control registers, changed only where they differ and put back on leaving.
//
// The memory clobbers keep the compiler from moving arithmetic across a change: operands are loaded
// after it and results stored before the way back.
#ifndef LUX_CORE_CONTROL_H
#define LUX_CORE_CONTROL_H

#include <stdint.h>

// Precision field of the x87 control word; the rounding field is always set to nearest.
enum X87Precision : uint16_t { X87_SINGLE = 0x000, X87_DOUBLE = 0x200, X87_EXTENDED = 0x300 };

constexpr uint16_t kX87Control = 0x0F00;      // precision and rounding
constexpr uint32_t kSseControl = 0x0000E000;  // rounding and flush-to-zero
constexpr uint32_t kSseFlags = 0x0000003F;    // exceptions raised

static inline uint16_t x87_control() {
  uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word) : : "memory");
  return word;
}

static inline void x87_load(uint16_t word) { asm volatile("fldcw %0" : : "m"(word) : "memory"); }

// Returns the caller's word, for x87_leave.
static inline uint16_t x87_enter(X87Precision precision) {
  const uint16_t caller = x87_control();
  if ((caller & kX87Control) != precision) x87_load((caller & ~kX87Control) | precision);
  return caller;
}

static inline void x87_leave(uint16_t caller, X87Precision precision) {
  if ((caller & kX87Control) != precision) x87_load(caller);
}

// The status word's exceptions. One that is unmasked and pending traps first, in this thread.
constexpr uint16_t kX87Flags = 0x003F;

static inline uint16_t x87_status() {
  uint16_t status;
  asm volatile("fnstsw %0" : "=m"(status) : : "memory");
  return status;
}

static inline uint16_t x87_flags() {
  uint16_t status;
  asm volatile("fwait\n\tfnstsw %0" : "=m"(status) : : "memory");
  return status & kX87Flags;
}

// Control, status and tag words and the last instruction's place.
struct X87Environment {
  uint16_t control, reserved1, status, reserved2, words[10];
};

// Leaves no flag raised and all exceptions masked.
static inline X87Environment x87_take_environment() {
  X87Environment environment;
  asm volatile("fnstenv %0\n\tfnclex" : "=m"(environment) : : "memory");
  return environment;
}

static inline void x87_put_environment(const X87Environment& environment) {
  asm volatile("fldenv %0" : : "m"(environment) : "memory");
}

// Raises flags without an operation: one that is unmasked traps at the next x87 instruction.
static inline void x87_raise(uint16_t flags) {
  X87Environment environment = x87_take_environment();
  environment.status |= flags;
  x87_put_environment(environment);
}

static inline uint32_t sse_control() {
  uint32_t word;
  asm volatile("stmxcsr %0" : "=m"(word) : : "memory");
  return word;
}

static inline void sse_load(uint32_t word) { asm volatile("ldmxcsr %0" : : "m"(word) : "memory"); }

static inline uint32_t sse_enter() {
  const uint32_t caller = sse_control();
  if (caller & kSseControl) sse_load(caller & ~kSseControl);
  return caller;
}

// What was raised in between stays raised, as it does where nothing had to be changed.
static inline void sse_leave(uint32_t caller) {
  if (caller & kSseControl) sse_load(caller | (sse_control() & kSseFlags));
}

#endif
