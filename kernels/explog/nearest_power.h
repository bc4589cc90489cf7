// SPDX-License-Identifier: MIT
#ifndef LUX_KERNELS_EXPLOG_NEAREST_POWER_H
#define LUX_KERNELS_EXPLOG_NEAREST_POWER_H

#include "core/bits.h"

// The pattern of the single nearest to the power of a base's magnitude, infinity and zero included;
// `about` is within 2^-35 of the power. The base is finite and not 0, the exponent finite. At 53-bit
// precision, to nearest.
uint32_t noxs_nearest_power(const float* x, const float* y, double about);

#endif
