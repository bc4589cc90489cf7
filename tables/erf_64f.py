# SPDX-License-Identifier: MIT
"""Cells and series of the double-precision error function.

The point of a cell is a single near its centre whose slope is almost a double, so that the slope
needs no second part.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, LAST, FIRST = 40, 6, 3
END = mpf(9) / 128  # of the series, in the first cell


def slope(x):
    return 2 / mpmath.sqrt(mpmath.pi) * mpmath.exp(-x * x)


def point_near(centre):
    def offset(x):
        exact = slope(x)
        return abs(header.rounded(exact, 53) - exact) / exact
    steps = int(mpmath.nint(mpmath.ldexp(centre, 19)))
    return min((mpmath.ldexp(steps + i, -19) for i in range(-100, 101)), key=offset)


worst = mpf(0)  # of the sum, relative to the result
rows = []
for k in range(FIRST, CELLS * LAST + 1):
    point = point_near(mpf(k) / CELLS)
    low, high = (mpf(2 * k + s) / (2 * CELLS) - point for s in (-1, 1))
    if k == FIRST:
        low = END - point
    at_point = mpmath.erf(point)
    head, tail = header.parts(at_point, (53, 24))
    first = header.rounded(slope(point), 53)
    rest = fits.fit(lambda r: (mpmath.erf(point + r) - at_point - slope(point) * r) / r**2,
                    low, high, 6)
    row = fits.stored(rest, [53] * 4 + [24] * 2)
    for r in fits.points(low, high):
        exact = mpmath.erf(point + r)
        worst = max(worst, abs(head + tail + r * (first + r * fits.value(row, r)) - exact) / exact)
    rows.append(header.braced([*map(header.single, (row[5], row[4], tail, point)),
                               *map(header.double, (*row[3::-1], first, head))]))

series = fits.fit(lambda z: mpmath.erf(mpmath.sqrt(z)) / mpmath.sqrt(z), mpf(0), END**2, 7)
head, tail = header.two_doubles(series[0])
held = fits.stored(series[1:], 53)
series_worst = fits.worst(
    lambda x: (head + tail + x * x * fits.value(held, x * x)) * x / mpmath.erf(x) - 1 if x else 0,
    mpf(0), END, 256)

header.main("kernels/erf/generated/erf_64f_table.h", [
    f"// erf(a) by cells of width 1/{CELLS} from 9/128 to {LAST}, r = a - point:",
    "// head + (tail + r (c1 + r (c2 + ... + r c7))). Relative error at most "
    f"{header.digits(worst)}.",
    "struct Cell {",
    "  float c7, c6, tail, point;",
    "  double c5, c4, c3, c2, c1, head;",
    "};",
    f"constexpr int32_t kFirstCell = {FIRST};  // round({CELLS} a) of kCell[0]",
    *header.array(f"Cell kCell[{len(rows)}]", rows),
    "// erf(x) / x for |x| < 9/128 as head + (tail + z (s[5] + z (s[4] + ...))), z = x^2. Relative error",
    f"// at most {header.digits(series_worst)}.",
    "inline constexpr struct Series {",
    "  double s[6], tail, head;",
    "} kSeries = {",
    f"    {header.doubles(held[::-1])},",
    f"    {header.double(tail)}, {header.double(head)}}};",
])
