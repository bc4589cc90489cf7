// SPDX-License-Identifier: MIT
//
// Reduction by multiples of pi/32 and tangent, for the x87 unit at 64-bit precision.
#ifndef LUX_KERNELS_TRIG_PI_32_H
#define LUX_KERNELS_TRIG_PI_32_H

#include "core/bits.h"
#include "kernels/trig/generated/pi_32_table.h"
#include "kernels/two_parts.h"

// x = j pi/32 + z, |z| <= pi/64 and a little. For |x| < 2^17: then j has 21 bits, and the first two
// products and all differences of comparable numbers are exact. z has a relative error of 2^-63,
// however near x is to a multiple of pi/2.
struct Step {
  int32_t j;
  long double z;
};

static inline Step nearest_step(long double x) {
  const auto& table = pi_32_table;
  const int32_t j = int32_t(__builtin_lrintl(x * table.steps));
  return {j, x - j * (long double)table.step[0] - j * (long double)table.step[1] -
                 j * (long double)table.step[2]};
}

// The table through a pointer of unknown value: constants stay in memory, as operands, where the
// compiler would otherwise keep them on the x87 stack and spill what else is there.
static inline const decltype(pi_32_table)& table_in_memory() {
  const auto* table = &pi_32_table;
  asm("" : "+r"(table));
  return *table;
}

// tan(j pi/32 + z) = (S + C tan z) / (C - S tan z); S and C are exactly 0 where they vanish.
static inline long double tan_of(const Step& step) {
  const auto& table = table_in_memory();
  const double* const c = table.tangent3;
  const uint32_t j = uint32_t(step.j) & 31;
  const long double z = step.z, z2 = z * z;
  const long double z4 = z2 * z2;
  const long double p = (c[4] * z4 + (c[3] * z2 + c[2])) * z4 + (c[1] * z2 + c[0]);
  const long double t = p * (z * z2) + z;
  const long double sine = sum(table.sine[j]), cosine = sum(table.sine[j + 16]);
  return (cosine * t + sine) / (cosine - sine * t);
}

// The same to 52 bits: table entries rounded to doubles, one term less.
static inline long double short_tan_of(const Step& step) {
  const auto& table = table_in_memory();
  const double* const c = table.short_tangent3;
  const uint32_t j = uint32_t(step.j) & 31;
  const long double z = step.z, z2 = z * z;
  const long double t = ((c[3] * z2 + c[2]) * (z2 * z2) + (c[1] * z2 + c[0])) * (z * z2) + z;
  const double sine = table.sine[j].high, cosine = table.sine[j + 16].high;
  return (cosine * t + sine) / (cosine - sine * t);
}

#endif
