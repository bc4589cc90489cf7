#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the double-precision roots: 128 quadratics for 1/sqrt(z) on [1 + i/128, 1 + (i+1)/128).

Each quadratic meets 1/sqrt(z) at the Chebyshev nodes of its interval, which is within 0.2 % of the
smallest possible largest error. The relative error of the rounded coefficients is sqrt(z) q(z) - 1.
Its derivative vanishes exactly where 5 c2 z^2 + 3 c1 z + c0 = 0, so the largest magnitude among the
interval's ends and these two points is a proven bound, here rounded up.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

INTERVALS = 128


def quadratic(i):
    low, high = 1 + mpf(i) / INTERVALS, 1 + mpf(i + 1) / INTERVALS
    return fits.stored(fits.fit(lambda z: 1 / mpmath.sqrt(z), low, high, 3), 53)


def largest_error(i, c0, c1, c2):
    first, last = 1 + mpf(i) / INTERVALS, 1 + mpf(i + 1) / INTERVALS
    root = mpmath.sqrt(9 * c1 * c1 - 20 * c0 * c2)
    extrema = [(-3 * c1 - root) / (10 * c2), (-3 * c1 + root) / (10 * c2)]
    points = [first, last] + [z for z in extrema if first < z < last]
    return max(abs(mpmath.sqrt(z) * ((c2 * z + c1) * z + c0) - 1) for z in points)


def rounded_up(value):
    """Three digits, not below the value."""
    exponent = int(mpmath.floor(mpmath.log10(value))) - 2
    digits = int(mpmath.ceil(value / mpf(10) ** exponent))
    return f"{digits // 100}.{digits % 100:02d}e{exponent + 2:+03d}"


rows = [quadratic(i) for i in range(INTERVALS)]
errors = [largest_error(i, *row) for i, row in enumerate(rows)]
assert max(errors) == errors[0] and min(errors) == errors[-1]

header.main("kernels/roots/generated/root_64f_table.h", [
    f"// Relative error of q(z) = (c2 z + c1) z + c0, proven: {rounded_up(errors[0])} in the first"
    f" interval, the largest,",
    f"// {rounded_up(errors[-1])} in the last, the smallest.",
    "alignas(64) inline constexpr struct Table {",
    "  double c0[128], c1[128], c2[128];",
    "  double parity[2];  // sqrt(2) for an even biased exponent, 1 for an odd one",
    "  float three;",
    "} static_const_table = {",
    *[line for k in range(3) for line in header.block([header.double(row[k]) for row in rows], f"c{k}")],
    f"    {{{header.double(mpmath.sqrt(2))}, {header.double(mpf(1))}}},",
    "    3.0f,",
    "};",
])
