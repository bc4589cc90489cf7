#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the single-precision reciprocal cube root: 512 quadratics over [1, 2) and the exponent
factors, made like those of the cube root, and the constants of the packed estimate.

The estimate y takes the pattern of x apart into 16-bit words, each multiplied by 0x5555 / 2^16 and
cut, and subtracts the result from a constant. c = x y^3 is bounded piece by piece: the upper word and
the leading bits of the lower one are fixed, so that x and y lie between known values. The quadratic
in c is the minimax fit of c^(-1/3) on that interval.
"""
import struct

import mpmath

from cbrt_32f import interval_ends, largest_error, minimax, scaled_factor
from shared import header

INTERVALS = 512
START = 0x54B7B000  # found by search: the interval's ends have the smallest ratio
PIECE = 4096        # of the lower word's 65536 values


def single(pattern):
    return struct.unpack("<f", struct.pack("<I", pattern))[0]


def estimate(upper, lower):
    return single(START - ((upper * 0x5555 >> 16) << 16) - (lower * 0x5555 >> 16))


def interval_of_c():
    low, high = 9.0, 0.0
    for upper in range(1 << 7, 255 << 7):
        for first in range(0, 65536, PIECE):
            last = first + PIECE - 1
            x, y = single(upper << 16 | first), estimate(upper, first)
            low = min(low, x * estimate(upper, last)**3)
            high = max(high, single(upper << 16 | last) * y**3)
    # Both products are rounded to doubles here, to singles in the kernel.
    return mpmath.mpf(low) * (1 - mpmath.mpf(2)**-22), mpmath.mpf(high) * (1 + mpmath.mpf(2)**-22)


power = -mpmath.mpf(1) / 3
ends = interval_ends(INTERVALS)
fits = [[header.rounded(c, 53) for c in minimax(low, high, power)]
        for low, high in zip(ends, ends[1:])]
worst = max(largest_error(low, high, power, *fit) for low, high, fit in zip(ends, ends[1:], fits))
c_low, c_high = interval_of_c()
step = [header.rounded(c, 24) for c in minimax(c_low, c_high, power)]
step_error = largest_error(c_low, c_high, power, *step)

header.main("kernels/roots/generated/invcbrt_32f_table.h", [
    f"// Relative error of the quadratics on [1, 2): at most {header.digits(worst, 6)}, taken at the",
    "// exact extrema of the rounded coefficients.",
    "alignas(64) inline constexpr struct Table {",
    f"  double c0[{INTERVALS}], c1[{INTERVALS}], c2[{INTERVALS}];",
    "  double scaled_factor[512];  // +-2^((127 - E)/3), by sign and biased exponent E",
    "} static_const_table = {",
    *[line for name, values in (
        *((f"c{k}", [fit[k] for fit in fits]) for k in range(3)),
        ("scaled_factor", [scaled_factor(i, power) for i in range(512)]))
      for line in header.block(map(header.double, values), name)],
    "};",
    "",
    "// The packed estimate. Proven for all normal arguments: x y^3 lies between"
    f" {header.digits(c_low, 6)} and",
    f"// {header.digits(c_high, 6)}; relative error of the quadratic there at most"
    f" {header.digits(step_error, 4)}.",
    f"constexpr uint32_t kStart = 0x{START:08X};",
    f"constexpr float kStep[3] = {header.singles(step)};"
    "  // constant first",
])
