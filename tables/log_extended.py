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
from mpmath import mpf

from shared import fits, header

CELLS, FIRST = 256, 107  # of a binade; the first centre is (1 + 107/256) / 2, the last 1 + 106/256
DEGREE, TERMS, POINTS = 4, 24, 600


def centre(t):
    i = FIRST + t
    return (1 + mpf(i) / CELLS) / 2 if i < CELLS else mpf(i) / CELLS


entries, reach = [], mpf(0)
for t in range(CELLS):
    m = centre(t)
    c = header.multiple(1 / m, -10)
    half = mpf(1) / (4 * CELLS if m < 1 else 2 * CELLS)
    # A float decides the cell: its rounding moves the bounds by up to 2^-24.
    reach = max([reach] + [abs(c * (m + d) - 1) for d in (-half - mpf(2)**-24, half + mpf(2)**-24)])
    high = header.multiple(-mpmath.log(c), -49)
    entries.append((c, c - 1, high, -mpmath.log(c) - high))
assert entries[CELLS - FIRST][:3] == (1, 0, 0) and entries[CELLS - FIRST][3] == 0

series = fits.stored(fits.fit(
    lambda x: fits.value([mpf((-1)**k) / (k + 3) for k in range(TERMS)], x),
    -reach, reach, DEGREE + 1), 53)

# log(1 + r) / r less what the polynomial gives for it, in units of the interval.
difference = [mpf((-1)**k) / (k + 1) * reach**k for k in range(TERMS)]
for k, value in enumerate([mpf(1), mpf(-1) / 2] + series):
    difference[k] -= value * reach**k
error = max(abs(fits.value(difference, u)) for u in fits.chebyshev_nodes(-1, 1, POINTS))
error /= mpmath.cos(mpmath.pi * TERMS / (2 * POINTS)) * mpmath.log1p(reach) / reach
error += reach**TERMS

two_high = header.multiple(mpmath.log(2), -49)
header.main("extended/generated/log_table.h", [
    f"// |r| at most {header.digits(reach)}, where the polynomial's relative error is below"
    f" {header.digits(error)}.",
    "struct LogCell {",
    "  float c, c1;       // near 1/centre, and less 1",
    "  double high, low;  // log(1/c)",
    "};",
    "struct ExtendedLog {",
    "  LogCell cell[256];",
    "  double two_high, two_low;  // log 2",
    "  double series[5];          // of r^3 to r^7",
    "};",
    "alignas(64) inline constexpr ExtendedLog kLog = {",
    *header.block([header.braced([*map(header.single, entry[:2]), *map(header.double, entry[2:])])
                   for entry in entries]),
    f"    {header.double(two_high)}, {header.double(fits.LN2 - two_high)},",
    f"    {header.doubles(series)},",
    "};",
])
