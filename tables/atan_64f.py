# SPDX-License-Identifier: MIT
"""Cells of the double-precision arctangent.

The 32 cells of a binade from 2^-8 to 2^8 turn the point (1, q) back by the angle of (d, n), which
lies within the cell and is short enough for exact products; one cell below and one above turn it by
nothing and by pi/2.
"""
import mpmath
from mpmath import mpf

from shared import header

LOWEST, HIGHEST, PER_BINADE = -8, 8, 32
SERIES = [mpf(-1) / 7, mpf(1) / 5, mpf(-1) / 3]


def turns():
    """n, d, and the angles at the cell's ends."""
    yield mpf(0), mpf(1), mpf(0), mpmath.atan(mpmath.ldexp(1, LOWEST))
    for exponent in range(LOWEST, HIGHEST):
        for i in range(PER_BINADE):
            low, high = (mpmath.atan(mpmath.ldexp(1 + mpf(end) / PER_BINADE, exponent))
                         for end in (i, i + 1))
            yield header.rounded(mpmath.tan((low + high) / 2), 11), mpf(1), low, high
    yield mpf(1), mpf(0), mpmath.atan(mpmath.ldexp(1, HIGHEST)), mpmath.pi / 2


worst, relative, rows = mpf(0), mpf(0), []
for n, d, *ends in turns():
    angle = mpmath.atan2(n, d)
    for end in ends:
        t = mpmath.tan(abs(end - angle))
        worst = max(worst, t)
        result = end if n else t
        error = t + t**3 * mpmath.polyval(SERIES, t**2) - mpmath.atan(t)
        relative = max(relative, abs(error) / result if result else 0)
    angles = [header.doubles(header.two_doubles(a)) for a in (angle, mpmath.pi - angle)]
    rows.append(header.braced([header.single(n), header.single(d), header.braced(angles)]))

header.main("kernels/trig/generated/atan_64f_table.h", [
    f"// |t| at most {header.digits(worst, 5)}; the series to t^7 moves a result by at most"
    f" {header.digits(relative)} of it.",
    "struct Pair {",
    "  double high, low;",
    "};",
    "struct Cell {",
    "  float n, d;",
    "  Pair angle[2];  // of (d, n), and pi less it",
    "};",
    *header.array(f"Cell kCell[{len(rows)}]", rows),
    f"inline constexpr double kSeries[3] = {header.doubles(SERIES)};  // of t^7, t^5, t^3",
])
