#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table and polynomial of the extended logarithm.

An entry stands for the numbers nearest its centre: a reciprocal c with ten bits after the point,
c - 1, and log(1/c) as a multiple of 2^-49 and the rest. Multiples of 2^-49 below 2^14 are added
exactly in extended precision.

log(1 + r) = r - r^2/2 + r^3 Q(r), Q by interpolation at Chebyshev points. The bound of its error
holds everywhere: a polynomial of degree n is at most 1 / cos(pi n / (2 N)) times its largest value
at N Chebyshev points.
"""
import mpmath
import tablegen
from mpmath import mpf

CELLS, FIRST = 256, 107  # of a binade; the first centre is (1 + 107/256) / 2, the last 1 + 106/256
DEGREE, TERMS, POINTS = 4, 24, 600


def centre(t):
    i = FIRST + t
    return (1 + mpf(i) / CELLS) / 2 if i < CELLS else mpf(i) / CELLS


def multiple(value, exponent):
    return mpmath.ldexp(mpmath.nint(mpmath.ldexp(value, -exponent)), exponent)


entries, reach = [], mpf(0)
for t in range(CELLS):
    m = centre(t)
    c = multiple(1 / m, -10)
    half = mpf(1) / (4 * CELLS if m < 1 else 2 * CELLS)
    # A float decides the cell: its rounding moves the bounds by up to 2^-24.
    reach = max([reach] + [abs(c * (m + d) - 1) for d in (-half - mpf(2)**-24, half + mpf(2)**-24)])
    high = multiple(-mpmath.log(c), -49)
    entries.append((c, c - 1, high, -mpmath.log(c) - high))
assert entries[CELLS - FIRST][:3] == (1, 0, 0) and entries[CELLS - FIRST][3] == 0

nodes = [reach * mpmath.cos(mpmath.pi * (2 * k + 1) / (2 * (DEGREE + 1))) for k in range(DEGREE + 1)]
matrix = mpmath.matrix([[x**k for k in range(DEGREE + 1)] for x in nodes])
values = mpmath.matrix([mpmath.polyval([mpf((-1)**k) / (k + 3) for k in reversed(range(TERMS))], x)
                        for x in nodes])
solution = mpmath.lu_solve(matrix, values)
series = [float(tablegen.rounded(solution[k], 53)) for k in range(DEGREE + 1)]

# log(1 + r) / r less what the polynomial gives for it, in units of the interval.
difference = [mpf((-1)**k) / (k + 1) * reach**k for k in range(TERMS)]
for k, value in enumerate([1.0, -0.5] + series):
    difference[k] -= mpf(value) * reach**k
samples = [mpmath.cos(mpmath.pi * (2 * k + 1) / (2 * POINTS)) for k in range(POINTS)]
error = max(abs(mpmath.polyval(difference[::-1], u)) for u in samples)
error /= mpmath.cos(mpmath.pi * TERMS / (2 * POINTS)) * mpmath.log1p(reach) / reach
error += reach**TERMS

two_high = multiple(mpmath.log(2), -49)
body = "\n".join([
    f"// |r| at most {mpmath.nstr(reach, 4)}, where the polynomial's relative error is below"
    f" {mpmath.nstr(error, 4)}.",
    "struct LogCell {",
    "  float c, c1;       // near 1/centre, and less 1",
    "  double high, low;  // log(1/c)",
    "};",
    "struct ExtendedLog {",
    "  LogCell cell[256];",
    "  double two_high, two_low;  // log 2",
    "  double series[5];          // of r^3 to r^7",
    "};",
    "inline constexpr ExtendedLog kLog = {  // one copy serves all kernels",
    "    {",
    *[f"        {{{float(c).hex()}f, {float(c1).hex()}f, {tablegen.double(high)}, {tablegen.double(low)}}},"
      for c, c1, high, low in entries],
    "    },",
    f"    {tablegen.double(two_high)}, {tablegen.double(mpmath.log(2) - two_high)},",
    f"    {{{', '.join(value.hex() for value in series)}}},",
    "};"])
tablegen.main("extended/generated/log_table.h", __file__, body)
