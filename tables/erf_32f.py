#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Cubics of the single-precision error function by cells, in doubles and in singles."""
import mpmath
import cells
import tablegen

CELLS, SINGLE_CELLS, LAST = 64, 32, 4
mpmath.mp.prec = 160


def ratio(u):
    return mpmath.erf(u) / u if u else 2 / mpmath.sqrt(mpmath.pi)


def error(row, centre, u):
    return abs(cells.value(row, u - centre) / ratio(u) - 1)


def table(per_unit, bits, around_centre):
    """Rows, and the errors of the cubics and of their two lowest terms."""
    rows, cubic, linear = [], mpmath.mpf(0), mpmath.mpf(0)
    for k in range(per_unit * LAST + 1):
        low = max(mpmath.mpf(2 * k - 1) / (2 * per_unit), mpmath.mpf(0))
        high = mpmath.mpf(2 * k + 1) / (2 * per_unit)
        centre = mpmath.mpf(k) / per_unit if around_centre else mpmath.mpf(0)
        row = cells.fit(lambda r: ratio(centre + r), low - centre, high - centre, 3)
        row = cells.stored(row, [bits] * 4)
        points = cells.points(low, high)
        cubic = max([cubic] + [error(row, centre, u) for u in points])
        linear = max([linear] + [error(row[:2], centre, u) for u in points])
        rows.append(row)
    return rows, mpmath.nstr(cubic, 4), mpmath.nstr(linear, 4)


doubles, worst, _ = table(CELLS, 53, False)
singles, single_worst, linear_worst = table(SINGLE_CELLS, 24, True)

body = "\n".join([
    f"// erf(u) / u by cells of width 1/{CELLS}, k = round({CELLS} u). Relative error at most {worst}.",
    "struct Cubic {",
    "  double c3, c2, c1, c0;",
    "};",
    f"static const Cubic kCubic[{len(doubles)}] = {{",
    *[f"    {{{', '.join(tablegen.double(c) for c in reversed(row))}}}," for row in doubles],
    "};",
    f"// erf(u) / u by cells of width 1/{SINGLE_CELLS}, c0 + c1 r + c2 r^2 + c3 r^3, "
    f"r = u - k/{SINGLE_CELLS}. Relative error at",
    f"// most {single_worst}, of c0 + c1 r at most {linear_worst}.",
    "struct Row {",
    "  float c[4];",
    "};",
    f"alignas(16) static const Row kRow[{len(singles)}] = {{",
    *[f"    {{{{{', '.join(cells.single(c) for c in row)}}}}}," for row in singles],
    "};"])
tablegen.main("kernels/erf/generated/erf_32f_table.h", __file__, body)
