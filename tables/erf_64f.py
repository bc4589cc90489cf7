#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Cells and series of the double-precision error function.

The point of a cell is a single near its centre whose slope is almost a double, so that the slope
needs no second part.
"""
import mpmath
import cells
import tablegen

CELLS, LAST, FIRST = 40, 6, 3
END = mpmath.mpf(9) / 128  # of the series, in the first cell
mpmath.mp.prec = 240


def slope(x):
    return 2 / mpmath.sqrt(mpmath.pi) * mpmath.exp(-x * x)


def point_near(centre):
    def offset(x):
        exact = slope(x)
        return abs(tablegen.rounded(exact, 53) - exact) / exact
    steps = int(mpmath.nint(mpmath.ldexp(centre, 19)))
    return min((mpmath.ldexp(steps + i, -19) for i in range(-100, 101)), key=offset)


worst = mpmath.mpf(0)  # of the sum, relative to the result
rows = []
for k in range(FIRST, CELLS * LAST + 1):
    point = point_near(mpmath.mpf(k) / CELLS)
    low, high = (mpmath.mpf(2 * k + s) / (2 * CELLS) - point for s in (-1, 1))
    if k == FIRST:
        low = END - point
    at_point = mpmath.erf(point)
    head = tablegen.rounded(at_point, 53)
    tail = tablegen.rounded(at_point - head, 24)
    first = tablegen.rounded(slope(point), 53)
    rest = cells.fit(lambda r: (mpmath.erf(point + r) - at_point - slope(point) * r) / r**2,
                     low, high, 5)
    row = cells.stored(rest, [53] * 4 + [24] * 2)
    for r in cells.points(low, high):
        exact = mpmath.erf(point + r)
        worst = max(worst, abs(head + tail + r * (first + r * cells.value(row, r)) - exact) / exact)
    singles = [cells.single(c) for c in (row[5], row[4], tail, point)]
    doubles = [tablegen.double(c) for c in (*row[3::-1], first, head)]
    rows.append(f"    {{{', '.join(singles + doubles)}}},")

series = cells.fit(lambda z: mpmath.erf(mpmath.sqrt(z)) / mpmath.sqrt(z), mpmath.mpf(0), END**2, 6)
head = tablegen.rounded(series[0], 53)
held = cells.stored(series[1:], [53] * 6)
series_worst = mpmath.mpf(0)
for x in cells.points(mpmath.mpf(0), END, 256)[1:]:
    tail = tablegen.rounded(series[0] - head, 53)
    error = (head + tail + x * x * cells.value(held, x * x)) * x / mpmath.erf(x) - 1
    series_worst = max(series_worst, abs(error))

body = "\n".join([
    f"// erf(a) by cells of width 1/{CELLS} from 9/128 to {LAST}, r = a - point:",
    "// head + (tail + r (c1 + r (c2 + ... + r c7))). Relative error at most "
    f"{mpmath.nstr(worst, 4)}.",
    "struct Cell {",
    "  float c7, c6, tail, point;",
    "  double c5, c4, c3, c2, c1, head;",
    "};",
    f"constexpr int32_t kFirstCell = {FIRST};  // round({CELLS} a) of kCell[0]",
    f"static const Cell kCell[{len(rows)}] = {{",
    *rows,
    "};",
    f"// erf(x) / x for |x| < 9/128 as head + (tail + z (s[5] + z (s[4] + ...))), z = x^2. "
    f"Relative error at most {mpmath.nstr(series_worst, 4)}.",
    "static const struct {",
    "  double s[6], tail, head;",
    "} kSeries = {",
    f"    {{{', '.join(tablegen.double(c) for c in reversed(held))}}},",
    f"    {tablegen.double(series[0] - head)}, {tablegen.double(head)}}};"])
tablegen.main("kernels/erf/generated/erf_64f_table.h", __file__, body)
