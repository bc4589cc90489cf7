#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the double-precision roots: 128 quadratics for 1/sqrt(z) on [1 + i/128, 1 + (i+1)/128).

Each quadratic meets 1/sqrt(z) at the Chebyshev nodes of its interval, which is within 0.2 % of the
smallest possible largest error. The relative error of the rounded coefficients is sqrt(z) q(z) - 1.
Its derivative vanishes exactly where 5 c2 z^2 + 3 c1 z + c0 = 0, so the largest magnitude among the
interval's ends and these two points is a proven bound, here rounded up.
"""
import mpmath
import tablegen
from mpmath import mpf

INTERVALS = 128


def quadratic(i):
    """Coefficients c0, c1, c2 through the three nodes, as doubles."""
    centre, radius = 1 + mpf(2 * i + 1) / (2 * INTERVALS), mpf(1) / (2 * INTERVALS)
    nodes = [centre + radius * mpmath.cos(mpmath.pi * (2 * k + 1) / 6) for k in range(3)]
    powers = mpmath.matrix([[1, z, z * z] for z in nodes])
    values = mpmath.matrix([1 / mpmath.sqrt(z) for z in nodes])
    return [tablegen.rounded(c, 53) for c in mpmath.lu_solve(powers, values)]


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


fits = [quadratic(i) for i in range(INTERVALS)]
errors = [largest_error(i, *fit) for i, fit in enumerate(fits)]
body = "\n".join([
    f"// Relative error of q(z) = (c2 z + c1) z + c0, proven: {rounded_up(errors[0])} in the first"
    f" interval, the largest,",
    f"// {rounded_up(errors[-1])} in the last, the smallest.",
    "static const struct {",
    "  double c0[128], c1[128], c2[128];",
    "  double parity[2];  // sqrt(2) for an even biased exponent, 1 for an odd one",
    "  float three;",
    "} static_const_table = {",
    *[line for k in range(3) for line in
      ["    {", *[f"        {tablegen.double(fit[k])}," for fit in fits], "    },"]],
    f"    {{{tablegen.double(mpmath.sqrt(2))}, {tablegen.double(mpf(1))}}},",
    "    3.0f,",
    "};",
])
assert max(errors) == errors[0] and min(errors) == errors[-1]
tablegen.main("kernels/roots/generated/root_64f_table.h", __file__, body)
